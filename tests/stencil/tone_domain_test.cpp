// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Some helpers do not return for some arguments. This unit is the tone stage
// compiled once more with helpers that check what they are given, so that a page
// which would hang the product fails a test instead.

#include "stencil/tone.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <random>

#include "stencil/fast_math.h"
#include "stencil/tattoo_dithering.h"

namespace checked {

int squareRoots = 0;
int powers = 0;

float squareRoot(float v) {
  ++squareRoots;
  const bool ends = v <= std::numeric_limits<float>::max() && std::bit_cast<std::uint32_t>(v) != 1U;
  EXPECT_TRUE(ends) << v;
  return ends ? my_sqrt(v) : 0.0F;
}

// Bases of the tone curve: 0, which never reaches the logarithm, or 1/191 to 1.
float power(float base, float exponent) {
  ++powers;
  EXPECT_TRUE(base == 0.0F || (base >= 1.0F / 191.0F && base <= 1.0F)) << base;
  return my_pow(base, exponent);
}

}  // namespace checked

// The functions get other names, so that the library's own are not found by their arguments.
#define my_sqrt checked::squareRoot
#define my_pow checked::power
#define cvtGray checkedCvtGray
#define count_levels checkedCountLevels
#define thresh_global_moments checkedThreshold
#define threshold_of_counts checkedThresholdOfCounts
#define piecewise_gamma_table checkedGammaTable
#define enh_piecewise_gamma checkedGamma
namespace checked {
int threshold_of_counts(const GreyCounts& counts);
GreyTable piecewise_gamma_table(int knee, float gammaLow, float gammaHigh);
// NOLINTNEXTLINE(bugprone-suspicious-include)
#include "stencil/tone.cpp"

namespace {

TEST(ToneDomain, CurveAsksOnlyForBasesThatConverge) {
  powers = 0;
  piecewise_gamma_table(kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  EXPECT_EQ(powers, 256);
}

TEST(ToneDomain, RootsOfNearlySingleLevelPagesEnd) {
  squareRoots = 0;
  GreyCounts counts{};
  for (const int pixels : {100, 999, 38400, 4000000}) {
    for (std::size_t most = 0; most < counts.size(); ++most) {
      for (std::size_t odd = 0; odd < counts.size(); ++odd) {
        counts = {};
        counts[most] = pixels;
        counts[odd] += 1;
        threshold_of_counts(counts);
      }
    }
  }
  EXPECT_GT(squareRoots, 0);
}

TEST(ToneDomain, RootsOfRandomPagesEnd) {
  squareRoots = 0;
  std::mt19937 random(11);
  for (int i = 0; i < 100'000; ++i) {
    GreyCounts counts{};
    for (auto levels = random() % 5; levels > 0; --levels) {
      counts[random() % 256] += static_cast<int>(random() % (1U << (random() % 24)));
    }
    threshold_of_counts(counts);
  }
  EXPECT_GT(squareRoots, 0);
}

}  // namespace
}  // namespace checked
