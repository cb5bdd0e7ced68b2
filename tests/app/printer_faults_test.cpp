// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of the application into a printer that has each kind of fault: what is on the paper in
// the end, and what the client is told while the fault lasts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/printed_commands.h"
#include "tests/app/running_app.h"
#include "tests/preview/running_printer.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* kPwg = "image/pwg-raster";

// 50 mm, about 29 kB.
std::string document() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 400, 1)});
}

std::string deviceOf(const RunningPrinter& printer) {
  return "socket://" + printer.address();
}

// The bytes of a job without the questions around it.
Bytes commandsOf(const RunningPrinter& printer, unsigned job) {
  const Bytes printed = printer.printed(job);
  const std::string bytes = withoutQuestions({printed.begin(), printed.end()});
  return {bytes.begin(), bytes.end()};
}

// What a printer without faults prints of the document.
const Bytes& wholeJob() {
  static const Bytes bytes = [] {
    RunningPrinter printer;
    RunningApp app({.device = deviceOf(printer) + "/?status=off"});
    EXPECT_EQ(app.print(document(), kPwg).state, IPP_JSTATE_COMPLETED);
    EXPECT_TRUE(printer.waitForJobs(1));
    return printer.printed(1);
  }();
  return bytes;
}

struct Fault {
  const char* name;
  std::vector<std::string> commands;
  std::string cure;
  std::string reason;
  std::string message;
};

void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

class FaultsThatPass : public testing::TestWithParam<Fault> {};

TEST_P(FaultsThatPass, LoseAndDoubleNothingAndAreTold) {
  const Fault& fault = GetParam();
  RunningPrinter printer(fault.commands);
  RunningApp app({.device = deviceOf(printer)});
  JobOutcome outcome;
  std::thread client([&] { outcome = app.print(document(), kPwg); });
  EXPECT_EQ(app.waitForReasons(fault.reason), fault.reason);
  const JobOutcome waiting = app.waitForMessage(1, fault.message);
  EXPECT_EQ(waiting.message, fault.message);
  EXPECT_EQ(waiting.state, IPP_JSTATE_PROCESSING);
  EXPECT_EQ(printer.tell(fault.cure), "ok");
  client.join();
  EXPECT_EQ(outcome.state, IPP_JSTATE_COMPLETED) << outcome.message;
  EXPECT_EQ(app.waitForReasons("none"), "none");
  EXPECT_TRUE(printer.waitForJobs(1));
  EXPECT_THAT(commandsOf(printer, 1), testing::ContainerEq(wholeJob()));
}

// With a buffer of 4 KiB the question for the cause waits behind the job's bytes.
INSTANTIATE_TEST_SUITE_P(
    Of, FaultsThatPass,
    testing::Values(
        Fault{"NoPaper", {"paper out"}, "paper ok", "media-empty", "Waiting: out of paper."},
        Fault{"PaperThatRunsOut",
              {"paper out after 20 mm"},
              "paper ok",
              "media-empty",
              "Waiting: out of paper."},
        Fault{"AnOpenCover", {"cover open"}, "cover closed", "cover-open", "Waiting: cover open."},
        Fault{"ACoverThatIsOpened",
              {"cover open after 20 mm"},
              "cover closed",
              "cover-open",
              "Waiting: cover open."},
        Fault{"AStall",
              {"stall after 9000 bytes"},
              "go",
              "offline",
              "Waiting: the printer takes no data."},
        Fault{"NoPaperAndASmallBuffer",
              {"buffer 4", "paper out after 20 mm"},
              "paper ok",
              "media-empty",
              "Waiting: out of paper."},
        Fault{"ACoverAndASmallBuffer",
              {"buffer 4", "cover open after 20 mm"},
              "cover closed",
              "cover-open",
              "Waiting: cover open."},
        Fault{"AnErrorAndASmallBuffer",
              {"buffer 4", "error recoverable after 20 mm"},
              "error none",
              "other",
              "Waiting: printer error."},
        Fault{"BeingAway",
              {"vanish"},
              "return",
              "offline",
              "Waiting: the printer cannot be reached."}),
    [](const auto& fault) { return std::string(fault.param.name); });

TEST(PrinterFaults, LittlePaperIsToldAndPrinted) {
  RunningPrinter printer({"paper near-end"});
  RunningApp app({.device = deviceOf(printer)});
  EXPECT_EQ(app.print(document(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(app.waitForReasons("media-low"), "media-low");
  EXPECT_TRUE(printer.waitForJobs(1));
  EXPECT_THAT(commandsOf(printer, 1), testing::ContainerEq(wholeJob()));
}

TEST(PrinterFaults, APrinterThatNeverAnswersPrints) {
  RunningPrinter printer({"answers off"});
  RunningApp app({.device = deviceOf(printer)});
  EXPECT_EQ(app.print(document(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(app.waitForReasons("none"), "none");
  EXPECT_TRUE(printer.waitForJobs(1));
  EXPECT_THAT(printer.printed(1), testing::ContainerEq(wholeJob()));
}

TEST(PrinterFaults, AJobIsCompletedWhenItIsPrinted) {
  RunningPrinter printer({"speed 25"});
  RunningApp app({.device = deviceOf(printer)});
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(app.print(document(), kPwg).state, IPP_JSTATE_COMPLETED);
  // 50 mm at 25 mm a second, and the feed before the cut.
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(PrinterFaults, AJobThatLostItsPowerIsNotPrintedAgain) {
  RunningPrinter printer({"power off after 20 mm"});
  RunningApp app({.device = deviceOf(printer)});
  const JobOutcome lost = app.print(document(), kPwg);
  EXPECT_EQ(lost.state, IPP_JSTATE_ABORTED);
  EXPECT_THAT(lost.message, testing::StartsWith("printer: "));
  EXPECT_EQ(printer.tell("power on"), "ok");
  EXPECT_EQ(app.print(document(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_TRUE(printer.waitForJobs(2));
  EXPECT_LT(printer.printed(1).size(), wholeJob().size());
  EXPECT_THAT(commandsOf(printer, 2), testing::ContainerEq(wholeJob()));
}

}  // namespace
}  // namespace wren_test
