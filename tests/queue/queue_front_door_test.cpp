// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The front door's commands for queues.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/queue/delivered_job.h"

namespace {

constexpr int kSkipped = 77;
constexpr std::size_t kOtherQueues = 5;  // those of the bench, see Scheduler::addQueues

// Doctor's look at the printer is a connection without a byte.
TEST(QueueFrontDoor, AddsAQueueThatDoctorMendsAndThatPrints) {
  CaptureServer printer;
  const std::string work = bench->scheduler.work();
  const int status =
      run(work + "/tree/front_door_test.sh " + work + " " + std::to_string(printer.port()));
  if (status == kSkipped) GTEST_SKIP() << "neither root nor a user namespace";
  ASSERT_EQ(status, 0);
  const auto looks = printer.take(1);
  EXPECT_TRUE(std::all_of(looks.begin(), looks.end(), [](const Bytes& b) { return b.empty(); }))
      << "something was printed";
  EXPECT_EQ(bench->printer.take(kOtherQueues).size(), kOtherQueues) << "doctor looks at each once";

  bench->takeRuns();
  EXPECT_EQ(bench->waitForEnd(bench->submit("till", "", "receipt.pdf")), IPP_JSTATE_COMPLETED);
  const auto received = printer.take(1);
  const auto runs = bench->takeRuns();
  ASSERT_EQ(received.size(), 1U);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_FALSE(received[0].empty());
  EXPECT_TRUE(received[0] == runs[0].byHand);
}

}  // namespace
