// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/fast_math.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::uint32_t bits(float v) {
  return std::bit_cast<std::uint32_t>(v);
}

TEST(FastMath, ToleranceIsAnExactConstant) {
  EXPECT_EQ(bits(kIterationTolerance), 0x358637BDU);
  EXPECT_EQ(static_cast<double>(kIterationTolerance), 9.999999974752427e-07);
}

TEST(MyAbs, KeepsNegativeZeroAndNan) {
  EXPECT_EQ(bits(myabs(-0.0F)), bits(-0.0F));
  EXPECT_EQ(bits(myabs(kNan)), bits(kNan));
  EXPECT_EQ(bits(myabs(-2.5F)), bits(2.5F));
  EXPECT_EQ(bits(myabs(2.5F)), bits(2.5F));
}

TEST(MySqrt, AnswersZeroAndNegativeArgumentsByValue) {
  EXPECT_EQ(bits(my_sqrt(0.0F)), bits(0.0F));
  EXPECT_EQ(bits(my_sqrt(-0.0F)), bits(0.0F));
  EXPECT_EQ(bits(my_sqrt(-4.0F)), bits(-1.0F));
  EXPECT_EQ(bits(my_sqrt(-kInfinity)), bits(-1.0F));
}

// The first guess for 4 is 2, and the first step changes nothing.
TEST(MySqrt, OfFourIsTheFirstGuess) {
  EXPECT_EQ(bits(my_sqrt(4.0F)), bits(2.0F));
}

TEST(MySqrt, ReturnsTheOlderEstimate) {
  const float v = 3.0F;
  float older = v / 2.0F;
  float newer = 0.5F * (older + v / older);
  while (!(kIterationTolerance > myabs(newer - older))) {
    older = newer;
    newer = 0.5F * (older + v / older);
  }
  EXPECT_EQ(bits(my_sqrt(v)), bits(older));
}

TEST(MySqrt, OfTwoPiIsNotTheExactRoot) {
  EXPECT_EQ(static_cast<double>(my_sqrt(std::bit_cast<float>(0x40C90FDBU))), 2.5066285133361816);
}

TEST(MyExp, OfZeroIsOne) {
  EXPECT_EQ(bits(my_exp(0.0F)), bits(1.0F));
  EXPECT_EQ(bits(my_exp(-0.0F)), bits(1.0F));
}

TEST(MyExp, BelowZeroIsTheReciprocalInDouble) {
  for (const float v : {1.0F, 0.5F, 4.25F, 71.0F}) {
    const double reciprocal = 1.0 / static_cast<double>(my_exp(v));
    EXPECT_EQ(bits(my_exp(-v)), bits(static_cast<float>(reciprocal))) << v;
  }
}

// 20 terms are far too few for e^71 = 6.8e30.
TEST(MyExp, StopsAfterTwentyTerms) {
  float term = 1.0F;
  float sum = 1.0F;
  for (int i = 1; i <= 20; ++i) {
    term = (71.0F / static_cast<float>(i)) * term;
    sum = sum + term;
  }
  EXPECT_EQ(bits(my_exp(71.0F)), bits(sum));
  EXPECT_LT(my_exp(71.0F), 1e30F);
}

TEST(MyLn, OfOneIsExactlyZero) {
  EXPECT_EQ(bits(my_ln(1.0F)), bits(0.0F));
}

TEST(MyLn, AnswersMinusOneOutsideItsDomain) {
  for (const float v : {0.0F, -0.0F, -2.0F, -kInfinity, kNan}) {
    EXPECT_EQ(bits(my_ln(v)), bits(-1.0F)) << v;
  }
}

TEST(MyLn, ReturnsTheOlderEstimateOfAStepDividedByTheArgument) {
  const float v = 0.25F;
  float older = (v - 1.0F) / (1.0F + v);
  float newer = older - (my_exp(older) - v) / v;
  while (!(kIterationTolerance > myabs(newer - older))) {
    older = newer;
    newer = older - (my_exp(older) - v) / v;
  }
  EXPECT_EQ(bits(my_ln(v)), bits(older));
}

TEST(MyPow, HasSpecialCases) {
  EXPECT_EQ(bits(my_pow(0.0F, 0.0F)), bits(1.0F));
  EXPECT_EQ(bits(my_pow(0.0F, 0.7F)), bits(0.0F));
  EXPECT_EQ(bits(my_pow(0.0F, -1.0F)), bits(-1.0F));
  EXPECT_EQ(bits(my_pow(0.0F, kNan)), bits(-1.0F));
  EXPECT_EQ(bits(my_pow(-2.0F, 0.5F)), bits(-1.0F));
  EXPECT_EQ(bits(my_pow(-2.0F, kNan)), bits(-1.0F));
  EXPECT_EQ(bits(my_pow(1.0F, 0.85F)), bits(1.0F));
}

// The logarithm of a negative base is -1, so the result is e^-exponent.
TEST(MyPow, OfANegativeBaseWithAWholeExponentIsNotAPower) {
  EXPECT_EQ(bits(my_pow(-2.0F, 3.0F)), bits(my_exp(-3.0F)));
  EXPECT_EQ(bits(my_pow(-7.5F, -2.0F)), bits(my_exp(2.0F)));
}

TEST(MyRound, HalvesGoAwayFromZero) {
  EXPECT_EQ(my_round(2.5F), 3);
  EXPECT_EQ(my_round(-2.5F), -3);
  EXPECT_EQ(my_round(-0.4F), 0);
  EXPECT_EQ(my_round(-0.0F), 0);
}

TEST(MyRound, AddsTheHalfInSinglePrecision) {
  EXPECT_EQ(my_round(0.49999997F), 1);
}

TEST(MyClamp, BoundsInts) {
  EXPECT_EQ(myClamp(300, 0, 255), 255);
  EXPECT_EQ(myClamp(-7, 0, 255), 0);
  EXPECT_EQ(myClamp(255, 0, 255), 255);
  EXPECT_EQ(myClamp(17, 0, 255), 17);
  EXPECT_EQ(myClamp(3, 5, 1), 5);
  EXPECT_EQ(myClamp(7, 5, 1), 1);
}

TEST(IsWithinBounds, ExcludesTheFarEdges) {
  EXPECT_TRUE(isWithinBounds(0, 0, 4, 3));
  EXPECT_TRUE(isWithinBounds(3, 2, 4, 3));
  EXPECT_FALSE(isWithinBounds(4, 0, 4, 3));
  EXPECT_FALSE(isWithinBounds(0, 3, 4, 3));
  EXPECT_FALSE(isWithinBounds(-1, 0, 4, 3));
  EXPECT_FALSE(isWithinBounds(0, -1, 4, 3));
}

}  // namespace
