// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Commands without a page through the whole application: jobs, sub-commands, identification.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/printed_paper.h"
#include "tests/app/printing_client.h"
#include "tests/app/running_app.h"
#include "tests/app/running_server.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

using testing::HasSubstr;

constexpr const char* kFormat = "application/vnd.cups-command";
const std::string kDrawer("\x1B\x70\x00\x32\x32", 5);
const std::string kPartialCut("\x1D\x56\x01", 3);
const std::string kFullCut("\x1D\x56\x00", 3);
// Of the printer's default: 12 mm.
const std::string kFeedToCut = "\x1B\x4A\xC0";
const std::string kBeep =
    "\x1F\x1B\x1F\x42\x65\x65\x70\x08\x1B\x42\x01\x01\x1F\x1B\x1F\x42\x65\x65\x70\x06";

std::string commands(const std::string& lines) {
  return "#CUPS-COMMAND\n" + lines + "\n";
}

// A device that is asked nothing.
std::string silent(const RunningPrinter& printer) {
  return "socket://" + printer.address() + "/?status=off";
}

// @param action empty: the printer's choice.
void identify(const RunningApp& app, const std::string& action) {
  Ipp request(ippNewRequest(IPP_OP_IDENTIFY_PRINTER));
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
               app.printerUri().c_str());
  if (!action.empty()) {
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "identify-actions", nullptr,
                 action.c_str());
  }
  http_t* http = httpConnect2("localhost", app.port(), nullptr, AF_UNSPEC,
                              HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr);
  const Ipp response(cupsDoRequest(http, request.release(), "/ipp/print/wren"));
  EXPECT_EQ(ippGetStatusCode(response.get()), IPP_STATUS_OK) << action;
  httpClose(http);
}

TEST(CommandJobs, WriteTheBytesOfTheirCommandsAndNoOthers) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  struct Row {
    const char* lines;
    std::string bytes;
  };
  const Row rows[] = {
      {"OpenDrawer", kDrawer},
      {"Beep", kBeep},
      {"Cut", kFeedToCut + kPartialCut},
      {"Cut full", kFeedToCut + kFullCut},
      {"Feed 10", "\x1B\x4A\xA0"},
      {"Feed 20", "\x1B\x4A\xFF\x1B\x4A\x41"},
      {"OpenDrawer\nCut partial", kDrawer + kFeedToCut + kPartialCut},
  };
  std::string expected;
  for (const Row& row : rows) {
    const JobOutcome outcome = app.print(commands(row.lines), kFormat);
    EXPECT_EQ(outcome.state, IPP_JSTATE_COMPLETED) << row.lines << ": " << outcome.message;
    expected += row.bytes;
  }
  EXPECT_THAT(printedBytes(printer), SameBytes(expected));
}

TEST(CommandJobs, UseTheSettingsOfTheJob) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  app.print(commands("OpenDrawer\nCut"), kFormat,
            {JobAttribute::integer("cash-drawer-pulse-width", 2),
             JobAttribute::integer("feed-cut-after-job-end", 0),
             JobAttribute::keyword("doc-cut-type", "full")});
  EXPECT_THAT(printedBytes(printer), SameBytes(std::string("\x1B\x70\x00\x64\x32", 5) + kFullCut));
}

TEST(CommandJobs, NameWhatIsNotUnderstoodAndDoTheRest) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  const JobOutcome some = app.print(commands("Dance\nOpenDrawer\nFeed 9999"), kFormat);
  EXPECT_EQ(some.state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(some.message, HasSubstr("Line 2: unknown command 'Dance'"));
  EXPECT_THAT(some.message, HasSubstr("Line 4: Feed takes 1 to 1000 (mm)"));
  const JobOutcome none = app.print(commands("Dance"), kFormat);
  EXPECT_EQ(none.state, IPP_JSTATE_ABORTED);
  EXPECT_EQ(none.message, "Line 2: unknown command 'Dance'");
  const JobOutcome noCut =
      app.print(commands("Cut"), kFormat, {JobAttribute::keyword("doc-cut-type", "none")});
  EXPECT_EQ(noCut.state, IPP_JSTATE_ABORTED);
  EXPECT_THAT(noCut.message, HasSubstr("doc-cut-type"));
  EXPECT_THAT(printedBytes(printer), SameBytes(kDrawer));
}

TEST(CommandJobs, AreKnownByTheirFirstLine) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  const JobOutcome outcome = app.print(commands("OpenDrawer"), "application/octet-stream");
  EXPECT_EQ(outcome.state, IPP_JSTATE_COMPLETED) << outcome.message;
  EXPECT_THAT(printedBytes(printer), SameBytes(kDrawer));
}

TEST(CommandJobs, PrintTheSelfTestPageAsWideAsTheHead) {
  for (const auto& [paperMm, headPx] : {std::pair{58, 384U}, {80, 576U}, {112, 832U}}) {
    RunningPrinter printer;
    RunningApp app({.paperMm = paperMm, .device = silent(printer)});
    EXPECT_EQ(app.print(commands("PrintSelfTestPage"), kFormat).state, IPP_JSTATE_COMPLETED);
    const std::string bytes = printedBytes(printer);
    EXPECT_EQ(bytes.substr(bytes.size() - 6), kFeedToCut + kPartialCut);
    const auto pages = printedPages(bytes);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages.at(0).rows.at(0).size(), headPx);
  }
}

TEST(Identification, BeepsUnlessItIsAskedForSomethingElse) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  identify(app, "");
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_COMPLETED);
  identify(app, "flash");
  identify(app, "display");
  identify(app, "sound");
  EXPECT_EQ(app.waitFor(2).state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(printedBytes(printer), SameBytes(kBeep + kBeep));
}

TEST(Identification, DoesNotMixIntoAJob) {
  RunningPrinter printer({"vanish"});
  RunningApp app({.device = silent(printer)});
  app.submit(commands("OpenDrawer"), kFormat);
  identify(app, "sound");
  printer.tell("return");
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(app.stateOf(2).id, 0);
  EXPECT_THAT(printedBytes(printer), SameBytes(kDrawer));
}

TEST(CommandPrograms, DoWhatTheirNameSays) {
  RunningPrinter printer;
  RunningApp app({.device = silent(printer)});
  const std::vector<std::vector<std::string>> calls = {
      {"drawer"}, {"beep"}, {"cut"}, {"cut", "full"}, {"feed", "10"}};
  for (std::vector<std::string> arguments : calls) {
    arguments.insert(arguments.begin() + 1, {"-u", app.printerUri()});
    const ProcessResult result = runApp(arguments);
    EXPECT_TRUE(result.exited(0)) << arguments.at(0) << ": " << result.err;
    EXPECT_EQ(result.out + result.err, "");
  }
  EXPECT_THAT(printedBytes(printer), SameBytes(kDrawer + kBeep + kFeedToCut + kPartialCut +
                                               kFeedToCut + kFullCut + "\x1B\x4A\xA0"));
}

TEST(CommandPrograms, RefuseWhatIsWrong) {
  struct Row {
    std::vector<std::string> arguments;
    int status;
    const char* message;
  };
  const Row rows[] = {
      {{"feed"}, 2, "mm is required"},
      {{"feed", "0"}, 2, "mm"},
      {{"feed", "1001"}, 2, "mm"},
      {{"feed", "far"}, 2, "mm"},
      {{"cut", "half"}, 2, "cut"},
      {{"drawer", "now"}, 2, "now"},
      {{"drawer", "-u", "http://localhost/"}, 1, "not the address of a printer"},
  };
  for (const Row& row : rows) {
    const ProcessResult result = runApp(row.arguments);
    EXPECT_TRUE(result.exited(row.status)) << row.message << ": " << result.exitStatus;
    EXPECT_THAT(result.err, HasSubstr(row.message));
  }
}

TEST(CommandPrograms, WaitBehindAJobThatWaitsAndSaySo) {
  RunningPrinter printer({"vanish"});
  RunningApp app({.device = silent(printer)});
  PrintingClient client(app, rasterStream(RasterKind::kPwg, {noisePage(576, 24, 1)}));
  const char* const kAway = "Waiting: the printer cannot be reached.";
  ASSERT_EQ(app.waitForMessage(1, kAway).message, kAway);
  ProcessSpec spec;
  spec.program = WREN_PRINTER_APP;
  spec.arguments = {"wren-printer-app", "drawer", "-u", app.printerUri()};
  spec.environment = {"PATH=/usr/bin:/bin"};
  Process drawer(spec);
  EXPECT_TRUE(drawer.waitForError("waits. Behind job 1. Waiting: the printer cannot be reached."))
      << drawer.errSoFar();
  printer.tell("return");
  EXPECT_TRUE(drawer.finish().exited(0));
  EXPECT_EQ(client.outcome().state, IPP_JSTATE_COMPLETED);
  const std::string bytes = printedBytes(printer);
  EXPECT_EQ(bytes.substr(bytes.size() - kDrawer.size()), kDrawer);
  EXPECT_EQ(bytes.find(kDrawer), bytes.size() - kDrawer.size());
}

TEST(CommandPrograms, FindTheServerAndItsPrinters) {
  RunningPrinter printer;
  RunningServer server;
  EXPECT_THAT(server.run({"drawer", "-d", "till"}).err, HasSubstr("the server has no printers"));
  for (const char* name : {"till", "bar"}) {
    server.ask({"add", "-d", name, "-m", "wren80", "-v", silent(printer)});
  }
  EXPECT_EQ(server.ask({"drawer", "-d", "till"}), "");
  EXPECT_EQ(server.ask({"beep"}), "");
  const ProcessResult wrong = server.run({"drawer", "-d", "tiller"});
  EXPECT_TRUE(wrong.exited(1));
  EXPECT_EQ(wrong.err, "wren-printer-app: there is no printer \"tiller\"; printers: bar, till\n");
  EXPECT_THAT(printedBytes(printer), SameBytes(kDrawer + kBeep));
  server.stop(15);
  const ProcessResult alone = server.run({"drawer", "-d", "till"});
  EXPECT_TRUE(alone.exited(1));
  EXPECT_EQ(alone.err, "wren-printer-app: the server does not run\n");
}

}  // namespace
}  // namespace wren_test
