// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of a queue into a printer that has each kind of fault. CUPS reads no status from the
// printer, so all that can be seen is that a job waits, and that a printer is away; what counts is
// the paper.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/printed_paper.h"
#include "tests/preview/running_printer.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren_test::printedBytes;
using wren_test::SameBytes;
using Clock = std::chrono::steady_clock;

constexpr const char* kQueue = "faulty80";
// 3.5 kB: some seconds at 9600 baud.
constexpr const char* kShortJob = "-o PageSize=Custom.200x60";
constexpr const char* kShort = "short.pdf";
// 12 m of paper, 7 MB: more than the buffers between filter and printer can hold.
constexpr const char* kLongJob = "-n 4 -o PageSize=Custom.72x3000mm";
constexpr const char* kLong = "endless.pdf";

/// A queue on a software printer that has faults.
class FaultyQueue {
 public:
  explicit FaultyQueue(const std::vector<std::string>& faults) : printer_(faults) {
    EXPECT_EQ(run(std::string("lpadmin -p ") + kQueue + " -E -v 'socket://" + printer_.address() +
                  "/?snmp=false' -P " + bench->scheduler.work() +
                  "/ppd/wren80.ppd -o printer-error-policy=abort-job 2>/dev/null"),
              0);
    bench->takeRuns();
  }
  FaultyQueue(const FaultyQueue&) = delete;
  FaultyQueue& operator=(const FaultyQueue&) = delete;
  ~FaultyQueue() { EXPECT_EQ(run(std::string("lpadmin -x ") + kQueue), 0); }

  RunningPrinter& printer() { return printer_; }

  /// What direct runs of the filter write for the jobs since the last call.
  static std::string sent() {
    std::string bytes;
    for (const FilterRun& run : bench->takeRuns())
      bytes.append(run.directBytes.begin(), run.directBytes.end());
    return bytes;
  }

 private:
  RunningPrinter printer_;
};

/// Waits until `lpstat` says this of the queue, at most 20 seconds. @return what it says then.
std::string waitForStatus(const std::string& wanted) {
  const auto end = Clock::now() + std::chrono::seconds(20);
  for (;;) {
    std::string status = outputOf(std::string("lpstat -p ") + kQueue);
    if (status.find(wanted) != std::string::npos || Clock::now() > end) return status;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

struct Fault {
  const char* name;
  std::vector<std::string> commands;
  const char* sign;  ///< in the printer's own status
  const char* cure;
  const char* shown = "now printing";  ///< of the queue while it lasts
};

class QueueFaults : public testing::TestWithParam<Fault> {};

TEST_P(QueueFaults, LoseAndDoubleNothing) {
  const Fault& fault = GetParam();
  FaultyQueue queue(fault.commands);
  const int job = bench->submit(kQueue, "", "receipt.pdf");
  ASSERT_GT(job, 0);
  EXPECT_TRUE(queue.printer().waitFor(fault.sign));
  EXPECT_THAT(waitForStatus(fault.shown), testing::HasSubstr(fault.shown));
  EXPECT_LT(bench->stateOf(job), IPP_JSTATE_STOPPED) << "it waits";
  EXPECT_EQ(queue.printer().tell(fault.cure), "ok");
  EXPECT_EQ(bench->waitForEnd(job), IPP_JSTATE_COMPLETED) << bench->scheduler.logTail();
  EXPECT_THAT(waitForStatus("is idle"), testing::HasSubstr("is idle"));
  EXPECT_TRUE(queue.printer().waitForJobs(1));
  EXPECT_THAT(printedBytes(queue.printer()), SameBytes(FaultyQueue::sent()));
}

INSTANTIATE_TEST_SUITE_P(
    Of, QueueFaults,
    testing::Values(
        Fault{"NoPaper", {"paper out"}, "\"receiving\":true", "paper ok"},
        Fault{"PaperThatRunsOut", {"paper out after 20 mm"}, "\"paper\":\"out\"", "paper ok"},
        Fault{"PaperThatRunsOutBeforeASmallBuffer",
              {"buffer 4", "paper out after 20 mm"},
              "\"paper\":\"out\"",
              "paper ok"},
        Fault{
            "ACoverThatIsOpened", {"cover open after 20 mm"}, "\"cover\":\"open\"", "cover closed"},
        Fault{"ACutter", {"error cutter after 20 mm"}, "\"error\":\"cutter\"", "error none"},
        Fault{"AStall", {"stall after 9000 bytes"}, "\"stalled\":true", "go"},
        Fault{"BeingAway", {"vanish"}, "\"reachable\":false", "return", "\n\tThe printer "}),
    [](const auto& fault) { return std::string(fault.param.name); });

TEST(QueueWithFaults, NoAnswersChangeNothing) {
  FaultyQueue queue({"answers off", "accept-delay 1000"});
  EXPECT_EQ(bench->waitForEnd(bench->submit(kQueue, "", "receipt.pdf")), IPP_JSTATE_COMPLETED);
  EXPECT_TRUE(queue.printer().waitForJobs(1));
  EXPECT_THAT(printedBytes(queue.printer()), SameBytes(FaultyQueue::sent()));
}

TEST(QueueWithFaults, ASerialLineGetsTheWholeJobOnce) {
  FaultyQueue queue({"baud 9600", "buffer 4"});
  const auto start = Clock::now();
  EXPECT_EQ(bench->waitForEnd(bench->submit(kQueue, kShortJob, kShort)), IPP_JSTATE_COMPLETED);
  EXPECT_TRUE(queue.printer().waitForJobs(1));
  EXPECT_GE(Clock::now() - start, std::chrono::seconds(2));
  EXPECT_THAT(printedBytes(queue.printer()), SameBytes(FaultyQueue::sent()));
}

struct Loss {
  const char* name;
  std::vector<std::string> commands;
  const char* recovery;
};

class QueueLosses : public testing::TestWithParam<Loss> {};

// Nobody knows how much of a job was printed when the connection is lost.
TEST_P(QueueLosses, EndTheJobAndTheNextOneIsPrintedWhole) {
  const Loss& loss = GetParam();
  FaultyQueue queue(loss.commands);
  const int job = bench->submit(kQueue, kLongJob, kLong);
  EXPECT_EQ(bench->waitForEnd(job), IPP_JSTATE_ABORTED) << bench->scheduler.logTail();
  const std::string sent = FaultyQueue::sent();
  EXPECT_EQ(queue.printer().tell(loss.recovery), "ok");
  EXPECT_EQ(bench->waitForEnd(bench->submit(kQueue, "", "receipt.pdf")), IPP_JSTATE_COMPLETED);
  EXPECT_TRUE(queue.printer().waitForJobs(2));
  const std::string next = FaultyQueue::sent();
  const std::string printed = printedBytes(queue.printer());
  ASSERT_GT(printed.size(), next.size());
  const std::string part = printed.substr(0, printed.size() - next.size());
  ASSERT_LT(part.size(), sent.size());
  EXPECT_THAT(part, SameBytes(sent.substr(0, part.size())));
  EXPECT_THAT(printed.substr(part.size()), SameBytes(next));
}

INSTANTIATE_TEST_SUITE_P(
    Of, QueueLosses,
    testing::Values(Loss{"Power", {"buffer 4", "power off after 20 mm"}, "power on"},
                    Loss{"ThePrinter", {"buffer 4", "vanish after 9000 bytes"}, "return"}),
    [](const auto& loss) { return std::string(loss.param.name); });

}  // namespace
