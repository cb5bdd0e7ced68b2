// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages of two levels of which one is rare are the hard ones: cancellation can make the
// discriminant any number, an infinity or NaN.

#include "stencil/moment_threshold.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/reference/stencil.h"

namespace wren::stencil {
namespace {

struct Level {
  std::size_t level;
  int pixels;
};

Histogram histogramOf(std::initializer_list<Level> levels) {
  Histogram histogram{};
  for (const auto [level, pixels] : levels) histogram[level] += pixels;
  return histogram;
}

// The discriminant in single precision, to show what is special about a histogram.
float discriminantOf(const Histogram& histogram) {
  int pixels = 0;
  for (const int count : histogram) pixels += count;
  float m1 = 0.0F;
  float m2 = 0.0F;
  float m3 = 0.0F;
  for (int k = 0; k < 256; ++k) {
    const float probability =
        static_cast<float>(histogram[static_cast<std::size_t>(k)]) / static_cast<float>(pixels);
    m1 = m1 + static_cast<float>(k) * probability;
    m2 = m2 + static_cast<float>(k * k) * probability;
    m3 = m3 + static_cast<float>(k * k * k) * probability;
  }
  const float cd = m2 - m1 * m1;
  const float c0 = (m1 * m3 - m2 * m2) / cd;
  const float c1 = (m1 * m2 - m3) / cd;
  return static_cast<float>(static_cast<double>(c1 * c1) - 4.0 * static_cast<double>(c0));
}

TEST(MomentThreshold, OfHalfBlackHalfWhiteIsWhite) {
  EXPECT_EQ(momentThreshold(histogramOf({{0, 2}, {255, 2}})), 255);
}

TEST(MomentThreshold, OfASingleLevelIsTheFallback) {
  for (std::size_t level = 0; level < 256; ++level) {
    EXPECT_EQ(momentThreshold(histogramOf({{level, 36}})), 128) << level;
  }
}

TEST(MomentThreshold, OfNoPixelsIsTheFallback) {
  EXPECT_EQ(momentThreshold(Histogram{}), 128);
}

// The exact discriminant is never negative; rounding makes it so on nearly single levels.
TEST(MomentThreshold, OfANegativeDiscriminantIsTheFallback) {
  for (const Histogram& histogram :
       {histogramOf({{109, 998}, {108, 2}}), histogramOf({{5, 38397}, {4, 3}}),
        histogramOf({{227, 99}, {240, 1}})}) {
    EXPECT_LT(discriminantOf(histogram), 0.0F);
    EXPECT_EQ(momentThreshold(histogram), 128);
  }
}

TEST(MomentThreshold, OfAnInfiniteDiscriminantIsTheFallback) {
  const Histogram histogram = histogramOf({{172, 999}, {173, 1}});
  EXPECT_EQ(discriminantOf(histogram), std::numeric_limits<float>::infinity());
  EXPECT_EQ(momentThreshold(histogram), 128);
}

TEST(MomentThreshold, OfADiscriminantThatIsNotANumberIsTheFallback) {
  const Histogram histogram = histogramOf({{139, 999}, {141, 1}});
  EXPECT_NE(discriminantOf(histogram), discriminantOf(histogram));
  EXPECT_EQ(momentThreshold(histogram), 128);
}

TEST(MomentThreshold, IsMinusOneWhenNoLevelExceedsTheDarkClass) {
  EXPECT_EQ(momentThreshold(histogramOf({{13, 38397}, {18, 3}})), -1);
}

class NearlySingleLevel : public testing::TestWithParam<int> {};

TEST_P(NearlySingleLevel, ThresholdEqualsTheReferenceForEveryPairOfLevels) {
  const int pixels = GetParam();
  Histogram histogram{};
  for (std::size_t most = 0; most < histogram.size(); ++most) {
    for (std::size_t rare = 0; rare < histogram.size(); ++rare) {
      if (rare == most) continue;
      for (int count = 1; count <= 20; ++count) {
        histogram[most] = pixels - count;
        histogram[rare] = count;
        ASSERT_EQ(momentThreshold(histogram),
                  reference::thresh_global_moments_from_counts(histogram.data(), pixels))
            << count << " of " << rare << " among " << pixels << " of " << most;
      }
      histogram[rare] = 0;
    }
    histogram[most] = 0;
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, NearlySingleLevel,
                         testing::Values(100, 1000, 38400, 324919, 4000000));

TEST(MomentThreshold, EqualsTheReferenceOnPagesOfTwoLevels) {
  std::mt19937 random(7);
  for (int i = 0; i < 200'000; ++i) {
    const int pixels = static_cast<int>(2 + random() % 4'000'000);
    const int count = static_cast<int>(1 + random() % (pixels - 1));
    Histogram histogram{};
    histogram[random() % 256] += pixels - count;
    histogram[random() % 256] += count;
    ASSERT_EQ(momentThreshold(histogram),
              reference::thresh_global_moments_from_counts(histogram.data(), pixels))
        << "page " << i;
  }
}

TEST(MomentThreshold, EqualsTheReferenceOnPagesOfUpToElevenLevels) {
  std::mt19937 random(8);
  for (int i = 0; i < 200'000; ++i) {
    Histogram histogram{};
    int pixels = 0;
    for (auto levels = random() % 12; levels > 0; --levels) {
      const int count = static_cast<int>(random() % (1U << (random() % 20)));
      histogram[random() % 256] += count;
      pixels += count;
    }
    ASSERT_EQ(momentThreshold(histogram),
              reference::thresh_global_moments_from_counts(histogram.data(), pixels))
        << "page " << i;
  }
}

}  // namespace
}  // namespace wren::stencil
