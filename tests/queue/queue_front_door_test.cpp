// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The commands of ./wren for queues.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren_test::SameBytes;

constexpr int kSkipped = 77;
constexpr std::size_t kOtherQueues = 5;  // of the test bench; see Scheduler::addQueues

// ./wren doctor checks a printer by a connection without data.
TEST(QueueFrontDoor, AddsAQueueThatDoctorRepairsAndThatPrints) {
  CaptureServer printer;
  const std::string work = bench->scheduler.work();
  const int status =
      run(work + "/tree/front_door_test.sh " + work + " " + std::to_string(printer.port()));
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

}  // namespace
