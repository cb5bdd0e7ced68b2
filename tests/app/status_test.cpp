// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Faults that lose a connection, slow printers and errors: what is printed is what the filter
// makes of the same pages, and the reason shows while it lasts. And how a printer is, in words.

#include <cups/cups.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "app/status_page.h"
#include "tests/app/filter_of_pages.h"
#include "tests/app/printed_paper.h"
#include "tests/app/printing_client.h"
#include "tests/app/running_app.h"
#include "tests/app/running_server.h"
#include "tests/app/scripted_printer.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kPwg = "image/pwg-raster";

std::string uriOf(const RunningPrinter& printer) {
  return "socket://" + printer.address();
}

std::string page(unsigned rows) {
  return rasterStream(RasterKind::kPwg, {noisePage(576, rows, 1)});
}

// More than a small buffer of the printer and those of the system hold: 1000 rows are 125 mm.
constexpr unsigned kLongRows = 4000;
constexpr unsigned kShortRows = 100;

struct Wait {
  const char* name;
  std::vector<std::string> faults;
  unsigned rows;
  const char* reason;
  const char* message;
  const char* recovery;
};

class WaitingForPrinter : public testing::TestWithParam<Wait> {};

TEST_P(WaitingForPrinter, ShowsWhyAndPrintsTheWholeJobOnce) {
  const Wait& wait = GetParam();
  RunningPrinter printer(wait.faults);
  RunningApp app({.device = uriOf(printer)});
  PrintingClient client(app, page(wait.rows));
  EXPECT_EQ(app.waitForReasons(wait.reason), wait.reason);
  const JobOutcome waiting = app.waitForMessage(1, wait.message);
  EXPECT_EQ(waiting.message, wait.message);
  EXPECT_EQ(waiting.state, IPP_JSTATE_PROCESSING);
  EXPECT_EQ(printer.tell(wait.recovery), "ok");
  const JobOutcome printed = client.outcome();
  EXPECT_EQ(printed.state, IPP_JSTATE_COMPLETED) << printed.message;
  EXPECT_EQ(printed.message, "");
  EXPECT_EQ(app.waitForReasons("none"), "none");
  EXPECT_THAT(printedBytes(printer), SameBytes(filterBytesOf(app.pages(), {})));
}

// printer_faults_test.cpp has paper, cover, stall and absence.
INSTANTIATE_TEST_SUITE_P(Faults, WaitingForPrinter,
                         testing::Values(Wait{"CutterError",
                                              {"error cutter"},
                                              kShortRows,
                                              "other",
                                              "Waiting: cutter error.",
                                              "error none"},
                                         Wait{"NoPaperInALongPage",
                                              {"paper out after 60 mm"},
                                              kLongRows,
                                              "media-empty",
                                              "Waiting: out of paper.",
                                              "paper ok"},
                                         Wait{"CoverInALongPageBeforeASmallBuffer",
                                              {"buffer 4", "cover open after 60 mm"},
                                              kLongRows,
                                              "cover-open",
                                              "Waiting: cover open.",
                                              "cover closed"},
                                         Wait{"OtherError",
                                              {"error unrecoverable"},
                                              kShortRows,
                                              "other",
                                              "Waiting: printer error.",
                                              "error none"}),
                         [](const auto& shown) { return shown.param.name; });

struct Way {
  const char* name;
  std::vector<std::string> faults;
  unsigned rows;
  const char* reason;
};

class SlowOrQuietPrinter : public testing::TestWithParam<Way> {};

TEST_P(SlowOrQuietPrinter, GetsTheWholeJobOnce) {
  const Way& way = GetParam();
  RunningPrinter printer(way.faults);
  RunningApp app({.device = uriOf(printer)});
  const JobOutcome printed = app.print(page(way.rows), kPwg);
  EXPECT_EQ(printed.state, IPP_JSTATE_COMPLETED) << printed.message;
  EXPECT_EQ(app.waitForReasons(way.reason), way.reason);
  printer.tell("paper ok");
  EXPECT_EQ(app.waitForReasons("none"), "none");
  EXPECT_TRUE(printer.waitForJobs(1));
  EXPECT_THAT(printedBytes(printer), SameBytes(filterBytesOf(app.pages(), {})));
}

INSTANTIATE_TEST_SUITE_P(
    Ways, SlowOrQuietPrinter,
    testing::Values(Way{"Good", {}, kShortRows, "none"},
                    Way{"SlowToAccept", {"accept-delay 1500"}, 30, "none"},
                    Way{"NearItsEnd", {"paper near-end"}, kShortRows, "media-low"}),
    [](const auto& shown) { return shown.param.name; });

/// The reasons and messages that a client sees while a job prints, each once.
std::set<std::string> seenWhilePrinting(RunningApp& app, PrintingClient& client) {
  std::set<std::string> seen;
  while (!client.hasEnded()) {
    seen.insert(app.printerReasons());
    const std::string message = app.stateOf(1).message;
    if (message.starts_with("Waiting: ")) seen.insert(message);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return seen;
}

struct Serial {
  const char* name;
  std::vector<std::string> faults;
  unsigned rows;
};

class SerialPrinter : public testing::TestWithParam<Serial> {};

// 5 kB at 960 bytes a second, or 73 kB, more than all buffers hold, at 11,520.
TEST_P(SerialPrinter, IsSlowAndNotTakenForOneThatStopped) {
  RunningPrinter printer(GetParam().faults);
  RunningApp app({.device = uriOf(printer)});
  const auto start = std::chrono::steady_clock::now();
  PrintingClient client(app, page(GetParam().rows));
  EXPECT_THAT(seenWhilePrinting(app, client), testing::ElementsAre("none"));
  EXPECT_EQ(client.outcome().state, IPP_JSTATE_COMPLETED) << client.outcome().message;
  EXPECT_TRUE(printer.waitForJobs(1));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
  EXPECT_THAT(printedBytes(printer), SameBytes(filterBytesOf(app.pages(), {})));
}

INSTANTIATE_TEST_SUITE_P(
    At9600Baud, SerialPrinter,
    testing::Values(
        Serial{"ThatAnswers", {"baud 9600"}, 64},
        Serial{"WithASmallBuffer", {"baud 9600", "buffer 4"}, 64},
        Serial{"ThatNeverAnswers", {"baud 9600", "answers off"}, 64},
        Serial{"ThatNeverAnswersWithASmallBuffer", {"baud 9600", "buffer 4", "answers off"}, 64},
        Serial{"ThatFillsAllBuffers", {"baud 115200", "buffer 4"}, 1000}),
    [](const auto& shown) { return shown.param.name; });

struct Loss {
  const char* name;
  std::vector<std::string> faults;
  const char* recovery;  ///< null: none is needed
};

class LostConnection : public testing::TestWithParam<Loss> {};

// What a printer had taken may be lost or not: the job is aborted, and never sent again.
TEST_P(LostConnection, AbortsTheJobAndPrintsTheNextOneWhole) {
  const Loss& loss = GetParam();
  RunningPrinter printer(loss.faults);
  RunningApp app({.device = uriOf(printer)});
  const JobOutcome lost = app.print(page(kLongRows), kPwg);
  EXPECT_EQ(lost.state, IPP_JSTATE_ABORTED);
  EXPECT_THAT(lost.message, StartsWith("printer: "));
  if (loss.recovery != nullptr) {
    EXPECT_EQ(app.waitForReasons("offline"), "offline");
    EXPECT_EQ(printer.tell(loss.recovery), "ok");
  }
  const JobOutcome next = app.print(page(kShortRows), kPwg);
  EXPECT_EQ(next.state, IPP_JSTATE_COMPLETED) << next.message;
  EXPECT_EQ(app.waitForReasons("none"), "none");
  const auto pages = app.pages();
  ASSERT_EQ(pages.size(), 2U);
  const std::string sent = filterBytesOf({pages.at(0)}, {});
  const std::string whole = filterBytesOf({pages.at(1)}, {});
  const std::string printed = printedBytes(printer);
  ASSERT_GE(printed.size(), whole.size());
  const std::string part = printed.substr(0, printed.size() - whole.size());
  EXPECT_LT(part.size(), sent.size());
  EXPECT_THAT(part, SameBytes(sent.substr(0, part.size())));
  EXPECT_THAT(printed.substr(part.size()), SameBytes(whole));
}

INSTANTIATE_TEST_SUITE_P(
    Losses, LostConnection,
    testing::Values(Loss{"PowerOff", {"buffer 4", "power off after 20 mm"}, "power on"},
                    Loss{"Vanish", {"buffer 4", "vanish after 9000 bytes"}, "return"},
                    Loss{"Reset", {"buffer 4", "reset after 9000 bytes"}, nullptr}),
    [](const auto& shown) { return shown.param.name; });

TEST(StatusText, SaysHowThePrinterIsAndWhetherTheDrawerIsOpen) {
  using wren::app::conditionText;
  using wren::app::PrinterCondition;
  using wren::app::PrinterStatus;
  const PrinterCondition low{false, false, PrinterStatus{}};
  PrinterStatus highPin;
  highPin.drawerPinHigh = true;
  const PrinterCondition high{false, false, highPin};
  PrinterStatus noPaper;
  noPaper.offline = noPaper.paperOut = true;
  EXPECT_EQ(conditionText(low, "unknown"), "ready; drawer level low");
  EXPECT_EQ(conditionText(high, "unknown"), "ready; drawer level high");
  EXPECT_EQ(conditionText(high, "high"), "ready; drawer open");
  EXPECT_EQ(conditionText(low, "high"), "ready; drawer closed");
  EXPECT_EQ(conditionText(high, "low"), "ready; drawer closed");
  EXPECT_EQ(conditionText(low, "low"), "ready; drawer open");
  EXPECT_EQ(conditionText({true, false, highPin}, "high"), "cannot be reached; drawer unknown");
  EXPECT_EQ(conditionText({false, true, std::nullopt}, "high"), "takes no data; drawer unknown");
  EXPECT_EQ(conditionText({}, "high"), "does not say how it is; drawer unknown");
  EXPECT_EQ(conditionText({false, false, noPaper}, "high"), "out of paper; drawer closed");
}

std::string webPage(const RunningServer& server, const std::string& path) {
  http_t* http = httpConnect2("localhost", server.port(), nullptr, AF_UNSPEC,
                              HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr);
  std::string page;
  if (http == nullptr) return page;
  // Sets the name of the host.
  httpClearFields(http);
  if (httpGet(http, path.c_str()) != 0) return page;
  while (httpUpdate(http) == HTTP_STATUS_CONTINUE) {
  }
  char part[4096];
  for (ssize_t count = 0; (count = httpRead2(http, part, sizeof part)) > 0;) {
    page.append(part, static_cast<std::size_t>(count));
  }
  httpClose(http);
  return page;
}

TEST(StatusCommand, TellsTheConditionOfEachPrinter) {
  RunningPrinter till({"drawer high"});
  RunningPrinter bar({"cover open"});
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", uriOf(till)});
  server.ask({"add", "-d", "bar", "-m", "wren80", "-v", uriOf(bar)});
  server.ask({"modify", "-d", "till", "-o", "drawer-level=high"});
  const std::string all = server.ask({"status"});
  EXPECT_THAT(all, HasSubstr("till: ready; drawer open\n"));
  EXPECT_THAT(all, HasSubstr("bar: cover open; drawer level low\n"));
  const std::string one = server.ask({"status", "-d", "till"});
  EXPECT_THAT(one, HasSubstr("till: ready; drawer open\n"));
  EXPECT_THAT(one, testing::Not(HasSubstr("bar:")));
  EXPECT_THAT(webPage(server, "/till/status"),
              HasSubstr("<p>The printer: ready; drawer open.</p>"));
  server.ask({"delete", "-d", "bar"});
  EXPECT_THAT(server.ask({"status"}), testing::Not(HasSubstr("bar:")));
}

TEST(StatusCommand, TellsWhatAJobWaitsFor) {
  RunningPrinter printer({"buffer 4", "paper out after 20 mm"});
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", uriOf(printer)});
  const int job = server.submit("till", WREN_EXAMPLES "/receipt.pdf");
  EXPECT_TRUE(printer.waitFor("\"paper\":\"out\""));
  const auto says = [&](const std::string& text) {
    return wren::app::eventually([&] {
      return server.ask({"status"}).find("till: " + text + "; drawer") != std::string::npos;
    });
  };
  EXPECT_TRUE(says("out of paper")) << server.ask({"status"});
  EXPECT_EQ(printer.tell("paper ok"), "ok");
  EXPECT_TRUE(server.waitForState("till", job, "completed"));
  EXPECT_TRUE(says("ready")) << server.ask({"status"});
}

}  // namespace
}  // namespace wren_test
