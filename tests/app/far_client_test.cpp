// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A server that others can reach, and clients on its own machine and on another one. Runs where
// run_far_client_test.sh has made an address that is not loopback.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

constexpr const char* kFarAddress = "192.0.2.1";
const std::string kDrawer("\x1B\x70\x00\x32\x32", 5);
const std::string kBeep =
    "\x1F\x1B\x1F\x42\x65\x65\x70\x08\x1B\x42\x01\x01\x1F\x1B\x1F\x42\x65\x65\x70\x06";
constexpr const char* kCommands = "application/vnd.cups-command";
constexpr const char* kRefused = "only clients on the printer's own machine may open the drawer";

// A server without a password is not shared.
const AppSetup kShared = {.options = {"--listen", "*"}, .state = "Password 0123~0123\n"};

using Papers = std::vector<std::string>;

/// Waits for the printer bytes of the jobs so far. A job without a page has no picture whose file
/// would tell that all are there.
void expectPapers(const RunningApp& app, const testing::Matcher<const Papers&>& expected) {
  for (int i = 0; i < 4000 && !expected.Matches(app.papers()); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_THAT(app.papers(), expected);
}

std::string commands(const std::string& lines) {
  return "#CUPS-COMMAND\n" + lines + "\n";
}

struct Document {
  const char* format;
  std::string bytes;
};

// One that PAPPL streams and one that it spools, which is printed by another thread.
std::vector<Document> documents() {
  return {{"image/pwg-raster", rasterStream(RasterKind::kPwg, {flatPage(576, 80, 255)})},
          {"application/pdf", readFile(WREN_EXAMPLES "/receipt.pdf")}};
}

const std::vector<JobAttribute> kOpenDrawer = {
    JobAttribute::keyword("cash-drawer-setting", "after")};

TEST(SharedServer, OpensTheDrawerForClientsOnItsOwnMachineAlone) {
  RunningApp app(kShared);
  std::size_t papers = 0;
  for (const Document& document : documents()) {
    SCOPED_TRACE(document.format);
    app.reachBy("127.0.0.1");
    const JobOutcome near = app.print(document.bytes, document.format, kOpenDrawer);
    ASSERT_EQ(near.state, IPP_JSTATE_COMPLETED) << near.message;
    EXPECT_THAT(app.waitForPapers(++papers).back(), testing::HasSubstr(kDrawer));

    app.reachBy(kFarAddress);
    const JobOutcome far = app.print(document.bytes, document.format, kOpenDrawer);
    EXPECT_EQ(far.state, IPP_JSTATE_ABORTED);
    EXPECT_THAT(far.message, testing::HasSubstr(kRefused));

    const JobOutcome plain = app.print(document.bytes, document.format);
    ASSERT_EQ(plain.state, IPP_JSTATE_COMPLETED) << plain.message;
    const auto all = app.waitForPapers(++papers);
    ASSERT_EQ(all.size(), papers);
    EXPECT_THAT(all.back(), testing::Not(testing::HasSubstr(kDrawer)));
  }
}

TEST(SharedServer, DoesTheCommandsOfOthersButTheDrawer) {
  RunningApp app(kShared);
  app.reachBy(kFarAddress);
  const JobOutcome drawer = app.print(commands("OpenDrawer"), kCommands);
  EXPECT_EQ(drawer.state, IPP_JSTATE_ABORTED);
  EXPECT_EQ(drawer.message, std::string("OpenDrawer: ") + kRefused);
  const JobOutcome both = app.print(commands("OpenDrawer\nBeep"), kCommands);
  EXPECT_EQ(both.state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(both.message, std::string("OpenDrawer: ") + kRefused);
  app.reachBy("127.0.0.1");
  EXPECT_EQ(app.print(commands("OpenDrawer"), kCommands).state, IPP_JSTATE_COMPLETED);
  expectPapers(app, testing::ElementsAre(kBeep, kDrawer));
}

TEST(SharedServer, RefusesTheDrawerToTheProgramOnAnotherMachine) {
  RunningApp app(kShared);
  const auto uri = [&](const std::string& host) {
    return "ipp://" + host + ":" + std::to_string(app.port()) + "/ipp/print/wren";
  };
  const ProcessResult far = runApp({"drawer", "-u", uri(kFarAddress)});
  EXPECT_TRUE(far.exited(1));
  EXPECT_EQ(far.err,
            std::string("wren-printer-app: job 1 was aborted: OpenDrawer: ") + kRefused + "\n");
  EXPECT_TRUE(runApp({"beep", "-u", uri(kFarAddress)}).exited(0));
  EXPECT_TRUE(runApp({"drawer", "-u", uri("127.0.0.1")}).exited(0));
  expectPapers(app, testing::ElementsAre(kBeep, kDrawer));
}

// As the web page does it for the printer's owner.
ipp_status_t letAnyoneOpenTheDrawer(const RunningApp& app) {
  Ipp request(ippNewRequest(IPP_OP_SET_PRINTER_ATTRIBUTES));
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
               app.printerUri().c_str());
  ippAddString(request.get(), IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "drawer-from-default", nullptr,
               "anyone");
  http_t* http = httpConnect2("localhost", app.port(), nullptr, AF_UNSPEC,
                              HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr);
  const Ipp response(cupsDoRequest(http, request.release(), "/ipp/print/wren"));
  httpClose(http);
  return ippGetStatusCode(response.get());
}

TEST(SharedServer, OpensTheDrawerForAllIfItIsSo) {
  RunningApp app(kShared);
  EXPECT_EQ(letAnyoneOpenTheDrawer(app), IPP_STATUS_OK);
  app.reachBy(kFarAddress);
  EXPECT_EQ(app.print(commands("OpenDrawer"), kCommands).state, IPP_JSTATE_COMPLETED);
  const Document raster = documents().at(0);
  EXPECT_EQ(app.print(raster.bytes, raster.format, kOpenDrawer).state, IPP_JSTATE_COMPLETED);
  expectPapers(app, testing::ElementsAre(kDrawer, testing::HasSubstr(kDrawer)));
}

}  // namespace
}  // namespace wren_test
