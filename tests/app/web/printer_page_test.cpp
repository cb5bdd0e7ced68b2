// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page of a printer by HTTP: its settings are those of PAPPL, and its buttons send exactly the
// bytes of a command.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/app/running_app.h"
#include "tests/app/web/web_client.h"

namespace wren_test {
namespace {

using namespace std::string_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPage = "/wren/printer";
constexpr const char* kAction = "/wren/printer/action";

class PrinterPage : public testing::Test {
 protected:
  PrinterPage() : client_(app_.port()), token_(client_.tokenOf(kPage)) {}

  std::string page() const { return client_.get(kPage).body; }

  // The bytes of the last connection, once they are `expected`; what they are after 20 seconds.
  std::string lastPaper(const std::string& expected) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
      const auto papers = app_.papers();
      std::string last = papers.empty() ? "" : papers.back();
      if (last == expected || std::chrono::steady_clock::now() > end) return last;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  RunningApp app_;
  WebClient client_;
  std::string token_;
};

struct Button {
  const char* action;
  const char* mm;
  std::string bytes;
};

TEST_F(PrinterPage, SendsTheBytesOfEachButton) {
  // Feed: 20 mm are 320 half dot rows, 255 at a time.
  const Button buttons[] = {{"drawer", "", "\x1B\x70\x00\x32\x32"s},
                            {"cut", "", "\x1B\x4A\xC0\x1D\x56\x01"s},
                            {"feed", "20", "\x1B\x4A\xFF\x1B\x4A\x41"s}};
  int jobs = 0;
  for (const Button& button : buttons) {
    SCOPED_TRACE(button.action);
    const WebAnswer answer = client_.postForm(
        kAction, {{"session", token_}, {"action", button.action}, {"mm", button.mm}});
    EXPECT_EQ(answer.status, 303) << answer.body;
    EXPECT_EQ(app_.waitFor(++jobs).state, IPP_JSTATE_COMPLETED);
    EXPECT_EQ(lastPaper(button.bytes), button.bytes);
  }
  EXPECT_THAT(client_.get("/wren/printer?sent=1").body, HasSubstr("Sent to the printer."));
}

TEST_F(PrinterPage, PrintsTheTestPage) {
  client_.postForm(kAction, {{"session", token_}, {"action", "test"}});
  const auto all = app_.waitForPapers(1);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_GT(all.front().size(), 10'000U);
}

TEST_F(PrinterPage, SendsNothingWithoutTheTokenOrByGet) {
  EXPECT_EQ(client_.postForm(kAction, {{"action", "drawer"}}).status, 403);
  EXPECT_EQ(client_.postForm(kAction, {{"action", "drawer"}, {"session", "x"}}).status, 403);
  // A link comes back to the page, which does not say that something was sent.
  for (const std::string& query : {""s, "?action=drawer"s, "?action=drawer&session=" + token_}) {
    const WebAnswer answer = client_.get(kAction + query);
    EXPECT_EQ(answer.status, 303) << query;
    EXPECT_THAT(answer.location, EndsWith(kPage)) << query;
  }
  for (const std::string action : {"", "Drawer", "<script>"}) {
    EXPECT_EQ(client_.postForm(kAction, {{"session", token_}, {"action", action}}).status, 400);
  }
  for (const std::string mm : {"", "0", "1001", "-1", "2\nOpenDrawer", "1e2"}) {
    EXPECT_EQ(
        client_.postForm(kAction, {{"session", token_}, {"action", "feed"}, {"mm", mm}}).status,
        400)
        << mm;
  }
  EXPECT_EQ(app_.stateOf(1).status, IPP_STATUS_ERROR_NOT_FOUND);
}

TEST_F(PrinterPage, SavesSettingsThatPapplsPagesShow) {
  const WebAnswer answer = client_.postForm(kPage, {{"session", token_},
                                                    {"doc-cut-type", "full"},
                                                    {"feed-cut-after-job-end", "7"},
                                                    {"cash-drawer-setting", "after"},
                                                    {"drawer-from", "anyone"},
                                                    {"longest-gap", "30"}});
  EXPECT_EQ(answer.status, 303) << answer.body;
  const std::string pappls = client_.get("/wren/printing").body;
  EXPECT_THAT(pappls, HasSubstr("<option value=\"full\" selected>Full</option>"));
  EXPECT_THAT(pappls,
              HasSubstr("name=\"feed-cut-after-job-end\" min=\"0\" max=\"15\" value=\"7\""));
  EXPECT_THAT(pappls, HasSubstr("<option value=\"after\" selected>"));
  EXPECT_THAT(pappls, HasSubstr("<option value=\"anyone\" selected>"));
  EXPECT_THAT(pappls, HasSubstr("name=\"longest-gap\" min=\"0\" max=\"200\" value=\"30\""));
  // The other way round.
  client_.postForm("/wren/printing", {{"session", client_.tokenOf("/wren/printing")},
                                      {"feed-cut-after-job-end", "3"}});
  EXPECT_THAT(page(), HasSubstr("<option value=\"3\" selected>3 mm</option>"));
}

TEST_F(PrinterPage, RefusesSettingsWithoutTheTokenOrOutOfRange) {
  const std::string before = page();
  EXPECT_EQ(client_.postForm(kPage, {{"doc-cut-type", "full"}}).status, 403);
  EXPECT_EQ(client_.postForm(kPage, {{"session", "x"}, {"doc-cut-type", "full"}}).status, 403);
  const WebAnswer answer = client_.postForm(
      kPage, {{"session", token_}, {"page-cut-type", "full"}, {"doc-cut-type", "<script>"}});
  EXPECT_EQ(answer.status, 400);
  EXPECT_THAT(answer.body, HasSubstr("Cut after the document &lt;script&gt;"));
  EXPECT_THAT(answer.body, Not(HasSubstr("<script>")));
  EXPECT_EQ(client_.postForm(kPage, {{"session", token_}, {"longest-gap", "201"}}).status, 400);
  client_.get(kPage + "?doc-cut-type=full&session="s + token_);
  EXPECT_EQ(page(), before);
}

TEST_F(PrinterPage, DrawsWhatTheSettingsDo) {
  EXPECT_THAT(page(), HasSubstr("partial cut"));
  client_.postForm(kPage, {{"session", token_},
                           {"page-cut-type", "full"},
                           {"doc-cut-type", "none"},
                           {"cash-drawer-setting", "before"},
                           {"buzzer2-setting", "after"},
                           {"buzzer2-repeat", "3"}});
  client_.speak("de");
  const std::string body = page();
  EXPECT_THAT(body, HasSubstr("Vollschnitt"));
  EXPECT_THAT(body, HasSubstr(">Lade geht auf</text>"));
  EXPECT_THAT(body, HasSubstr(">Summer × 3</text>"));
  EXPECT_THAT(body, Not(HasSubstr(">Teilschnitt</text>")));
}

}  // namespace
}  // namespace wren_test
