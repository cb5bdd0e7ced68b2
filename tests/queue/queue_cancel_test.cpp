// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job that is cancelled while it prints.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "escpos/reader.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren_test::SameBytes;

// 12 m of paper, 7 MB: more than the buffers between filter and printer can hold.
constexpr const char* kLongJob =
    "-n 4 -o PageSize=Custom.72x3000mm -o PageType=1 -o CashDrawerSetting=2";

// Feed at the end of the page, feed and partial cut as in the defaults of the queue, buzzer off,
// status request. No drawer pulse and no beep.
const Bytes kCancelledEnd = {0x1B, 0x4A, 0x10, 0x1B, 0x4A, 0xC0, 0x1D, 0x56, 0x01, 0x1F,
                             0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76};

TEST(QueueCancel, ACancelledJobStopsAfterABandWithACutAndTheNextOnePrints) {
  const auto whole = bench->print("wren80", kLongJob, "endless.pdf");
  ASSERT_EQ(whole.state, IPP_JSTATE_COMPLETED);
  ASSERT_EQ(whole.runs.size(), 1U);
  ASSERT_THAT(whole.received, SameBytes(whole.runs[0].directBytes));

  bench->printer.holdAfter(100'000);
  const int job = bench->submit("wren80", kLongJob, "endless.pdf");
  ASSERT_GT(job, 0);
  ASSERT_TRUE(bench->printer.waitUntilHeld());
  EXPECT_EQ(run("cancel wren80-" + std::to_string(job)), 0);
  bench->printer.release();
  EXPECT_EQ(bench->waitForEnd(job), IPP_JSTATE_CANCELED);

  Bytes sent = bench->takeReceived();
  ASSERT_LT(sent.size(), whole.received.size());
  EXPECT_TRUE(wren::escpos::readAll(sent).problems.empty());
  ASSERT_GE(sent.size(), kCancelledEnd.size());
  const auto end = sent.end() - static_cast<std::ptrdiff_t>(kCancelledEnd.size());
  EXPECT_EQ(Bytes(end, sent.end()), kCancelledEnd);
  sent.erase(end, sent.end());
  const auto sameLength = whole.received.begin() + static_cast<std::ptrdiff_t>(sent.size());
  EXPECT_THAT(sent, SameBytes(Bytes(whole.received.begin(), sameLength)));
  bench->takeRuns();

  const auto next = bench->print("wren80", "", "receipt.pdf");
  EXPECT_EQ(next.state, IPP_JSTATE_COMPLETED);
  ASSERT_EQ(next.runs.size(), 1U);
  EXPECT_THAT(next.received, SameBytes(next.runs[0].directBytes));
}

}  // namespace
