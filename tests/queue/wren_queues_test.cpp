// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program wren beside the scheduler: its commands for queues, and a print without a queue.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/print/job_files.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren_test::SameBytes;

constexpr int kSkipped = 77;
constexpr std::size_t kOtherQueues = 5;  // of the test bench; see Scheduler::addQueues

// wren doctor checks a printer by a connection without data.
TEST(WrenQueues, AddsAQueueThatDoctorRepairsAndThatPrints) {
  CaptureServer printer;
  const std::string work = bench->scheduler.work();
  const int status =
      run(work + "/wren_queues_test.sh " + work + " " + std::to_string(printer.port()));
  if (status == kSkipped) GTEST_SKIP() << "not root, and no user namespace";
  ASSERT_EQ(status, 0);
  const auto checks = printer.take(1);
  EXPECT_TRUE(std::all_of(checks.begin(), checks.end(), [](const auto& c) {
    return c.bytes.empty();
  })) << "something was printed";
  EXPECT_EQ(bench->printer.take(kOtherQueues).size(), kOtherQueues) << "doctor checks each once";

  bench->takeRuns();
  EXPECT_EQ(bench->waitForEnd(bench->submit("till", "", "receipt.pdf")), IPP_JSTATE_COMPLETED);
  const auto received = printer.take(1);
  const auto runs = bench->takeRuns();
  ASSERT_EQ(received.size(), 1U);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_FALSE(received[0].bytes.empty());
  EXPECT_THAT(received[0].bytes, SameBytes(runs[0].directBytes));
}

struct Document {
  const char* options;
  const char* file;
};

// The queue wren80 has the settings of `wren add-queue`.
TEST(QueueBytes, AreThoseOfWrenPrint) {
  const std::string work = bench->scheduler.work();
  const Document kDocuments[] = {
      {"", "receipt.pdf"},
      {"-o HalftoneType=Burkes", "photo.png"},
      {"", "order.txt"},
      {"-n 2 -o CashDrawerSetting=1 -o PageCutType=1", "two-pages.pdf"},
      {"-o fit-to-page -o PageType=1", "wide.pdf"},
      {"-o landscape -o PageSize=X80MMY120MM", "receipt.pdf"},
      {"-o PageSize=Custom.72x350mm -o HalftoneType=QVDithering", "drawing.png"},
      {"-o cpi=14 -o page-ranges=1", "order.txt"},
      {"-o number-up=2", "two-pages.pdf"},
  };
  for (const Document& document : kDocuments) {
    const auto delivered = bench->print("wren80", document.options, document.file);
    const std::string out = work + "/runs-of-wren.prn";
    const std::string command =
        "cd " + work + "/documents && " + work + "/program/cli/wren print " + document.options +
        " --out " + out + " --images " + work + "/images-of-wren " + document.file + " >/dev/null";
    ASSERT_EQ(run(command), 0) << command;
    EXPECT_FALSE(delivered.received.empty()) << command;
    EXPECT_THAT(job_files::bytesOfFile(out), SameBytes(delivered.received)) << command;
  }
}

}  // namespace
