// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The threshold on pages that are hard for the method: two levels of which one
// is rare. Cancellation makes the discriminant anything there, and a square root
// of an infinity or of not-a-number would never end.

#include <gtest/gtest.h>

#include <random>

#include "stencil/tone.h"
#include "tests/reference/stencil.h"

namespace {

int referenceThreshold(const GreyCounts& counts, int pixels) {
  return reference::thresh_global_moments_from_counts(counts.data(), pixels);
}

class NearlySingleLevel : public testing::TestWithParam<int> {};

TEST_P(NearlySingleLevel, ThresholdReturnsForEveryPairOfLevels) {
  const int pixels = GetParam();
  GreyCounts counts{};
  for (std::size_t most = 0; most < counts.size(); ++most) {
    for (std::size_t odd = 0; odd < counts.size(); ++odd) {
      if (odd == most) continue;
      for (int oddPixels = 1; oddPixels <= 20; ++oddPixels) {
        counts[most] = pixels - oddPixels;
        counts[odd] = oddPixels;
        const int threshold = threshold_of_counts(counts);
        ASSERT_TRUE(threshold >= -1 && threshold <= 255);
        ASSERT_EQ(threshold, referenceThreshold(counts, pixels))
            << oddPixels << " of " << odd << " among " << pixels << " of " << most;
      }
      counts[odd] = 0;
    }
    counts[most] = 0;
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, NearlySingleLevel,
                         testing::Values(100, 1000, 38400, 324919, 4000000));

TEST(ThresholdReference, PagesOfTwoLevelsInAnyShare) {
  std::mt19937 random(7);
  for (int i = 0; i < 200'000; ++i) {
    const int pixels = static_cast<int>(2 + random() % 4'000'000);
    const int odd = static_cast<int>(1 + random() % (pixels - 1));
    GreyCounts counts{};
    counts[random() % 256] += pixels - odd;
    counts[random() % 256] += odd;
    ASSERT_EQ(threshold_of_counts(counts), referenceThreshold(counts, pixels));
  }
}

TEST(ThresholdReference, PagesOfSomeLevels) {
  std::mt19937 random(8);
  for (int i = 0; i < 200'000; ++i) {
    GreyCounts counts{};
    int pixels = 0;
    for (auto levels = random() % 12; levels > 0; --levels) {
      const int count = static_cast<int>(random() % (1U << (random() % 20)));
      counts[random() % 256] += count;
      pixels += count;
    }
    ASSERT_EQ(threshold_of_counts(counts), referenceThreshold(counts, pixels));
  }
}

}  // namespace
