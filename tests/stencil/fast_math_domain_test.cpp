// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// `my_sqrt` and `my_ln` do not return for some arguments. Here the sources of the
// threshold and the tone curve are compiled once more with functions that check their
// arguments, so a page that would hang the product fails a test instead.

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

#include "stencil/fast_math.h"
#include "stencil/moment_threshold.h"
#include "stencil/recipe.h"
#include "stencil/tone_curve.h"

namespace wren::stencil {
namespace {

int squareRoots = 0;
int powers = 0;

float checkedSquareRoot(float v) {
  ++squareRoots;
  const bool ends = v <= std::numeric_limits<float>::max() && std::bit_cast<std::uint32_t>(v) != 1U;
  EXPECT_TRUE(ends) << v;
  return ends ? my_sqrt(v) : 0.0F;
}

// The bases of the tone curve are 0, which never reaches the logarithm, and 1/191 to 1.
float checkedPower(float base, float exponent) {
  ++powers;
  EXPECT_TRUE(base == 0.0F || (base >= 1.0F / 191.0F && base <= 1.0F)) << base;
  return my_pow(base, exponent);
}

}  // namespace

int checkedMomentThreshold(const Histogram& histogram);
ToneCurve checkedPiecewiseGamma(int knee, float gammaLow, float gammaHigh);
const ToneCurve& checkedStencilToneCurve();

}  // namespace wren::stencil

// New names keep the second copies apart from the library's functions.
#define my_sqrt checkedSquareRoot
#define my_pow checkedPower
#define momentThreshold checkedMomentThreshold
#define piecewiseGamma checkedPiecewiseGamma
#define stencilToneCurve checkedStencilToneCurve
// NOLINTNEXTLINE(bugprone-suspicious-include)
#include "stencil/moment_threshold.cpp"
// NOLINTNEXTLINE(bugprone-suspicious-include)
#include "stencil/tone_curve.cpp"

namespace wren::stencil {
namespace {

TEST(FastMathDomain, ToneCurveUsesOnlyBasesThatConverge) {
  powers = 0;
  checkedPiecewiseGamma(kKnee, kGammaBelowKnee, kGammaAboveKnee);
  EXPECT_EQ(powers, 256);
}

TEST(FastMathDomain, RootsOfNearlySingleLevelPagesEnd) {
  squareRoots = 0;
  Histogram histogram{};
  for (const int pixels : {100, 999, 38400, 4000000}) {
    for (std::size_t most = 0; most < histogram.size(); ++most) {
      for (std::size_t other = 0; other < histogram.size(); ++other) {
        histogram = {};
        histogram[most] = pixels;
        histogram[other] += 1;
        checkedMomentThreshold(histogram);
      }
    }
  }
  EXPECT_GT(squareRoots, 0);
}

TEST(FastMathDomain, RootsOfRandomPagesEnd) {
  squareRoots = 0;
  std::mt19937 random(11);
  for (int i = 0; i < 100'000; ++i) {
    Histogram histogram{};
    for (auto levels = random() % 5; levels > 0; --levels) {
      histogram[random() % 256] += static_cast<int>(random() % (1U << (random() % 24)));
    }
    checkedMomentThreshold(histogram);
  }
  EXPECT_GT(squareRoots, 0);
}

}  // namespace
}  // namespace wren::stencil
