// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/ordered_dither.h"

#include <gtest/gtest.h>

#include "tests/dither/dither_fixtures.h"
#include "tests/support/same_bytes.h"

namespace {

using namespace wren_test;

using wren::dither::ThresholdMatrix;

Bytes orderedDots(const ThresholdMatrix& thresholds, std::size_t width, const Bytes& levels) {
  Sample sample;
  sample.width = width;
  sample.height = levels.size() / width;
  sample.levels = levels;
  const SampleBuffers buffers(sample);
  ditherOrdered(thresholds, wren::dither::LevelRows(buffers.page()));
  return buffers.dots();
}

TEST(OrderedDither, ComparesEveryLevelWithEveryThreshold) {
  Bytes levels(256 + 7);
  for (std::size_t x = 0; x < levels.size(); ++x) levels[x] = static_cast<std::uint8_t>(x);
  for (int threshold = 0; threshold < 256; ++threshold) {
    ThresholdMatrix thresholds;
    thresholds.fill(static_cast<std::uint8_t>(threshold));
    Bytes expected;
    for (const std::uint8_t level : levels) expected.push_back(level > threshold ? 255 : 0);
    ASSERT_TRUE(sameBytes(expected, orderedDots(thresholds, levels.size(), levels), levels.size()))
        << "threshold " << threshold;
  }
}

// All sixteen thresholds differ, so that every mix-up of rows and columns shows.
TEST(OrderedDither, RepeatsItsMatrixAfterFourColumnsAndRows) {
  constexpr std::size_t kWidth = 37;
  const ThresholdMatrix thresholds = {0,   16,  32,  48,   //
                                      64,  80,  96,  112,  //
                                      128, 144, 160, 176,  //
                                      192, 208, 224, 240};
  for (int level = 8; level < 256; level += 16) {
    const Bytes levels(kWidth * 9, static_cast<std::uint8_t>(level));
    Bytes expected;
    for (std::size_t i = 0; i < levels.size(); ++i) {
      const int threshold = thresholds[4 * (i / kWidth % 4) + i % kWidth % 4];
      expected.push_back(level > threshold ? 255 : 0);
    }
    EXPECT_TRUE(sameBytes(expected, orderedDots(thresholds, kWidth, levels), kWidth)) << level;
  }
}

}  // namespace
