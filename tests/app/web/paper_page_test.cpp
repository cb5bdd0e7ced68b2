// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page of papers: nothing is kept unless somebody says so, what is kept is private, and it goes
// when the setting goes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "escpos/reader.h"
#include "tests/app/running_app.h"
#include "tests/app/sample_documents.h"
#include "tests/app/web/web_client.h"
#include "tests/preview/png_reading.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kPage = "/wren/paper";
constexpr const char* kText = "text/plain";

class PaperPage : public testing::Test {
 protected:
  PaperPage() : client_(app_.port()), token_(client_.tokenOf(kPage)) {}

  WebAnswer keep(const std::string& count) {
    return client_.postForm(kPage, {{"session", token_}, {"kept-papers", count}});
  }
  std::string page() const { return client_.get(kPage).body; }

  std::size_t files() const {
    std::size_t count = 0;
    std::error_code ignored;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(app_.folder() / "papers", ignored)) {
      ++count;
    }
    return count;
  }

  RunningApp app_;
  WebClient client_;
  std::string token_;
};

TEST_F(PaperPage, KeepsNothingUnlessSomebodySaysSo) {
  EXPECT_EQ(app_.print("one\n", kText).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(files(), 0U);
  EXPECT_THAT(page(), HasSubstr("No paper is kept yet."));
}

TEST_F(PaperPage, ShowsTheLastJobsNewestFirstWithTheirBytes) {
  EXPECT_EQ(keep("2").status, 303);
  for (const std::string text : {"one\n", "two\n", "three\n"}) {
    EXPECT_EQ(app_.print(text, kText, {JobAttribute::keyword("halftone-type", "bayer")}).state,
              IPP_JSTATE_COMPLETED);
  }
  const auto papers = app_.waitForPapers(3);
  const std::string body = page();
  EXPECT_THAT(body, Not(HasSubstr("?job=1\"")));
  EXPECT_LT(body.find("picture?job=3\""), body.find("picture?job=2\""));
  EXPECT_NE(body.find("picture?job=2\""), std::string::npos);
  EXPECT_THAT(body, HasSubstr("<dt>Halftone</dt><dd>Bayer pattern</dd>"));
  EXPECT_THAT(body, HasSubstr("<dt>By</dt><dd>tester</dd>"));
  EXPECT_THAT(client_.get("/wren/paper/bytes?job=3").body, SameBytes(papers.at(2)));
  EXPECT_THAT(client_.get("/wren/paper/bytes?job=2").body, SameBytes(papers.at(1)));
  const GreyPicture picture = readPngBytes(client_.get("/wren/paper/picture?job=3").body);
  // The paper, with margins for the ruler and the marks.
  EXPECT_GT(picture.width, 576U);
  for (const auto& entry : std::filesystem::directory_iterator(app_.folder() / "papers")) {
    struct stat status = {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U) << entry.path();
  }
  EXPECT_EQ(files(), 4U);
}

TEST_F(PaperPage, ForgetsAllAtOnceWhenTheSettingGoes) {
  keep("5");
  app_.print("one\n", kText);
  EXPECT_EQ(files(), 2U);
  keep("0");
  EXPECT_EQ(files(), 0U);
}

TEST_F(PaperPage, ForgetsSoonWhenPapplsPageSetsItTo0) {
  keep("5");
  app_.print("one\n", kText);
  EXPECT_EQ(files(), 2U);
  EXPECT_THAT(client_.get("/wren/printing").body,
              HasSubstr("name=\"kept-papers\" min=\"0\" max=\"50\" value=\"5\""));
  client_.postForm("/wren/printing",
                   {{"session", client_.tokenOf("/wren/printing")}, {"kept-papers", "0"}});
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (files() != 0 && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(files(), 0U);
}

TEST_F(PaperPage, PrintsAgainWithoutOpeningTheDrawer) {
  keep("5");
  app_.print("one\n", kText, {JobAttribute::keyword("cash-drawer-setting", "after")});
  EXPECT_EQ(app_.waitForPapers(1).size(), 1U);
  EXPECT_EQ(client_.postForm("/wren/paper/again", {{"session", token_}, {"job", "1"}}).status, 303);
  const auto papers = app_.waitForPapers(2);
  ASSERT_EQ(papers.size(), 2U);
  const std::string pulse("\x1B\x70\x00\x32\x32", 5);
  std::string expected = papers.at(0);
  const auto at = expected.find(pulse);
  ASSERT_NE(at, std::string::npos);
  expected.erase(at, pulse.size());
  EXPECT_THAT(papers.at(1), SameBytes(expected));
}

TEST_F(PaperPage, ChangesNothingWithoutTheTokenOrByGet) {
  keep("5");
  app_.print("one\n", kText);
  app_.waitForPapers(1);
  const std::string before = page();
  EXPECT_EQ(client_.postForm(kPage, {{"kept-papers", "0"}}).status, 403);
  EXPECT_EQ(client_.postForm("/wren/paper/again", {{"job", "1"}}).status, 403);
  client_.get(std::string(kPage) + "?kept-papers=0&session=" + token_);
  client_.get("/wren/paper/again?job=1&session=" + token_);
  for (const std::string count : {"51", "-1", "x", ""}) {
    EXPECT_EQ(keep(count).status, 400) << count;
  }
  EXPECT_EQ(page(), before);
  EXPECT_EQ(app_.papers().size(), 1U);
}

TEST_F(PaperPage, AnswersInWordsForWhatIsNotKept) {
  for (const std::string job : {"1", "0", "-1", "x", "../state", "1%2F..%2Fstate", ""}) {
    for (const std::string part : {"picture", "bytes"}) {
      const WebAnswer answer = client_.get("/wren/paper/" + part + "?job=" + job);
      EXPECT_EQ(answer.status, 404) << part << " " << job;
      EXPECT_THAT(answer.body, HasSubstr("This paper is no longer kept.")) << part << " " << job;
    }
  }
}

TEST_F(PaperPage, EscapesTheNamesOfJobsAndUsers) {
  keep("5");
  const std::string name = "\"><script>alert(1)</script>&lt;'";
  Ipp request(ippNewRequest(IPP_OP_PRINT_JOB));
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
               app_.printerUri().c_str());
  for (const char* attribute : {"requesting-user-name", "job-name", "document-name"}) {
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, attribute, nullptr, name.c_str());
  }
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               kText);
  const JobOutcome outcome = app_.send(std::move(request), "one\n");
  ASSERT_NE(outcome.id, 0) << outcome.message;
  app_.waitFor(outcome.id);
  app_.waitForPapers(1);
  const std::string body = page();
  EXPECT_THAT(body, HasSubstr("<h2>&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;&amp;lt;&#39;"));
  EXPECT_THAT(body, HasSubstr("<dd>&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_THAT(body, Not(HasSubstr("<script>")));
}

}  // namespace
}  // namespace wren_test
