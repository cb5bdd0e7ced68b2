// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job that is cancelled in the middle.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "escpos/reader.h"
#include "tests/queue/delivered_job.h"

namespace {

// Twelve metres of paper, 7 MB: more than all the buffers between filter and printer hold.
constexpr const char* kLongJob =
    "-n 4 -o PageSize=Custom.72x3000mm -o PageType=1 -o CashDrawerSetting=2";

// The feed of a page end, the feed and the partial cut of the queue's defaults, and the printer's
// own end; neither drawer nor buzzer.
const Bytes kCancelledEnd = {0x1B, 0x4A, 0x10, 0x1B, 0x4A, 0xC0, 0x1D, 0x56, 0x01, 0x1F,
                             0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76};

bool endsWith(const Bytes& bytes, const Bytes& end) {
  return bytes.size() >= end.size() &&
         std::equal(end.begin(), end.end(), bytes.end() - static_cast<std::ptrdiff_t>(end.size()));
}

TEST(QueueCancel, ACancelledJobStopsAtABandAndIsCutAndTheNextOnePrints) {
  const auto whole = bench->print("wren80", kLongJob, "endless.pdf");
  ASSERT_EQ(whole.state, IPP_JSTATE_COMPLETED);
  ASSERT_EQ(whole.runs.size(), 1U);
  ASSERT_TRUE(whole.received == whole.runs[0].byHand);

  bench->printer.holdAfter(100'000);
  const int job = bench->submit("wren80", kLongJob, "endless.pdf");
  ASSERT_GT(job, 0);
  ASSERT_TRUE(bench->printer.waitUntilHeld());
  EXPECT_EQ(run("cancel wren80-" + std::to_string(job)), 0);
  bench->printer.release();
  EXPECT_EQ(bench->waitForEnd(job), IPP_JSTATE_CANCELED);

  Bytes sent = bench->takeReceived();
  EXPECT_LT(sent.size(), whole.received.size());
  EXPECT_TRUE(wren::escpos::readAll(sent).problems.empty());
  ASSERT_TRUE(endsWith(sent, kCancelledEnd));
  sent.resize(sent.size() - kCancelledEnd.size());
  EXPECT_TRUE(std::equal(sent.begin(), sent.end(), whole.received.begin()));
  bench->takeRuns();

  const auto next = bench->print("wren80", "", "receipt.pdf");
  EXPECT_EQ(next.state, IPP_JSTATE_COMPLETED);
  ASSERT_EQ(next.runs.size(), 1U);
  EXPECT_TRUE(next.received == next.runs[0].byHand);
}

}  // namespace
