// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Special arguments by table; all others against the reference implementation, up to a
// million arguments per function, inside the domain in which the iterations end.

#include "stencil/fast_math.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

#include "tests/reference/stencil.h"

namespace wren::stencil {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::uint32_t kInfinityBits = 0x7F800000U;
constexpr int kArguments = 1'000'000;

std::uint32_t bits(float v) {
  return std::bit_cast<std::uint32_t>(v);
}

float fromBits(std::uint32_t pattern) {
  return std::bit_cast<float>(pattern);
}

struct Value {
  const char* name;
  float actual;
  float expected;
};

TEST(FastMath, SpecialArgumentsHaveTheirOwnResults) {
  const Value values[] = {
      {"myabs(-0)", myabs(-0.0F), -0.0F},
      {"myabs(NaN)", myabs(kNan), kNan},
      {"my_sqrt(0)", my_sqrt(0.0F), 0.0F},
      {"my_sqrt(-0)", my_sqrt(-0.0F), 0.0F},
      {"my_sqrt(-4)", my_sqrt(-4.0F), -1.0F},
      {"my_sqrt(-infinity)", my_sqrt(-kInfinity), -1.0F},
      {"my_exp(0)", my_exp(0.0F), 1.0F},
      {"my_exp(-0)", my_exp(-0.0F), 1.0F},
      {"my_ln(1)", my_ln(1.0F), 0.0F},
      {"my_ln(0)", my_ln(0.0F), -1.0F},
      {"my_ln(-0)", my_ln(-0.0F), -1.0F},
      {"my_ln(-2)", my_ln(-2.0F), -1.0F},
      {"my_ln(-infinity)", my_ln(-kInfinity), -1.0F},
      {"my_ln(NaN)", my_ln(kNan), -1.0F},
      {"my_pow(0, 0)", my_pow(0.0F, 0.0F), 1.0F},
      {"my_pow(0, 0.7)", my_pow(0.0F, 0.7F), 0.0F},
      {"my_pow(0, -1)", my_pow(0.0F, -1.0F), -1.0F},
      {"my_pow(0, NaN)", my_pow(0.0F, kNan), -1.0F},
      {"my_pow(-2, 0.5)", my_pow(-2.0F, 0.5F), -1.0F},
      {"my_pow(-2, NaN)", my_pow(-2.0F, kNan), -1.0F},
      {"my_pow(1, 0.85)", my_pow(1.0F, 0.85F), 1.0F},
  };
  for (const Value& value : values) {
    EXPECT_EQ(bits(value.actual), bits(value.expected)) << value.name << " is " << value.actual;
  }
}

// The first estimate for 4 is 2, and the first step does not change it.
TEST(MySqrt, OfFourIsTheFirstEstimate) {
  EXPECT_EQ(my_sqrt(4.0F), 2.0F);
}

TEST(MySqrt, OfTwoPiIsNotTheExactRoot) {
  EXPECT_EQ(static_cast<double>(my_sqrt(fromBits(0x40C90FDBU))), 2.5066285133361816);
}

// 20 terms are far too few for e^71 = 6.8e30.
TEST(MyExp, IsTooSmallForLargeArguments) {
  EXPECT_LT(my_exp(71.0F), 1e30F);
}

TEST(MyRound, RoundsHalvesAwayFromZero) {
  struct Row {
    float v;
    int expected;
  };
  // The half is added in single precision, so the last argument rounds up.
  for (const Row row :
       {Row{2.5F, 3}, Row{-2.5F, -3}, Row{-0.4F, 0}, Row{-0.0F, 0}, Row{0.49999997F, 1}}) {
    EXPECT_EQ(my_round(row.v), row.expected) << row.v;
  }
}

TEST(MyClamp, ChecksTheLowerBoundFirst) {
  struct Row {
    int v;
    int lo;
    int hi;
    int expected;
  };
  for (const Row row : {Row{300, 0, 255, 255}, Row{-7, 0, 255, 0}, Row{255, 0, 255, 255},
                        Row{17, 0, 255, 17}, Row{3, 5, 1, 5}, Row{7, 5, 1, 1}}) {
    EXPECT_EQ(myClamp(row.v, row.lo, row.hi), row.expected)
        << row.v << " in " << row.lo << ".." << row.hi;
  }
}

TEST(IsWithinBounds, ExcludesTheFarEdges) {
  struct Row {
    int x;
    int y;
    bool expected;
  };
  for (const Row row : {Row{0, 0, true}, Row{3, 2, true}, Row{4, 0, false}, Row{0, 3, false},
                        Row{-1, 0, false}, Row{0, -1, false}}) {
    EXPECT_EQ(isWithinBounds(row.x, row.y, 4, 3), row.expected) << row.x << ", " << row.y;
  }
}

class Arguments {
 public:
  // Any float but NaN and the infinities, all bit patterns equally likely.
  float anyFinite() {
    auto pattern = random_();
    while ((pattern & kInfinityBits) == kInfinityBits) pattern = random_();
    return fromBits(static_cast<std::uint32_t>(pattern));
  }

  // Between two positive floats. All bit patterns, and so all exponents, are equally likely.
  float between(float low, float high) {
    return fromBits(std::uniform_int_distribution<std::uint32_t>(bits(low), bits(high))(random_));
  }

  int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

 private:
  std::mt19937 random_{20261120U};
};

TEST(FastMathReference, Abs) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float v = arguments.anyFinite();
    ASSERT_EQ(bits(myabs(v)), bits(reference::myabs(v))) << v;
  }
}

TEST(FastMathReference, Sqrt) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float v = arguments.anyFinite();
    if (bits(v) == 1U) continue;  // the smallest denormal never converges
    ASSERT_EQ(bits(my_sqrt(v)), bits(reference::my_sqrt(v))) << v;
  }
}

TEST(FastMathReference, SqrtAtTheEndsOfItsDomain) {
  for (const float v : {fromBits(2U), fromBits(3U), std::numeric_limits<float>::min(),
                        std::numeric_limits<float>::max()}) {
    EXPECT_EQ(bits(my_sqrt(v)), bits(reference::my_sqrt(v))) << v;
  }
}

TEST(FastMathReference, Exp) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float magnitude = arguments.between(1e-9F, 100.0F);
    const float v = i % 2 == 0 ? magnitude : -magnitude;
    ASSERT_EQ(bits(my_exp(v)), bits(reference::my_exp(v))) << v;
  }
}

TEST(FastMathReference, ExpOfAnyFloat) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float v = arguments.anyFinite();
    ASSERT_EQ(bits(my_exp(v)), bits(reference::my_exp(v))) << v;
  }
}

TEST(FastMathReference, Ln) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float v = arguments.between(1e-2F, 7e6F);
    ASSERT_EQ(bits(my_ln(v)), bits(reference::my_ln(v))) << v;
  }
}

TEST(FastMathReference, LnOfSmallArgumentsTakesManySteps) {
  for (const float v : {9e-3F, 1.0F / 191.0F, 1e-3F, 2.5e-4F, 1e-4F, 1e-5F}) {
    EXPECT_EQ(bits(my_ln(v)), bits(reference::my_ln(v))) << v;
  }
}

TEST(FastMathReference, PowOfTheBasesOfTheToneCurve) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float base = arguments.between(1.0F / 191.0F, 1.0F);
    const float exponent = arguments.between(0.01F, 4.0F);
    ASSERT_EQ(bits(my_pow(base, exponent)), bits(reference::my_pow(base, exponent)))
        << base << " to the " << exponent;
  }
}

// Includes negative bases with a whole exponent, which do not give the power.
TEST(FastMathReference, PowOfZeroAndNegativeBases) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float base = i % 3 == 0 ? 0.0F : -arguments.between(1e-30F, 1e30F);
    const float whole = static_cast<float>(arguments.integer(-2'000'000'000, 2'000'000'000));
    const float exponent = i % 2 == 0 ? whole : arguments.between(1e-3F, 1e9F);
    ASSERT_EQ(bits(my_pow(base, exponent)), bits(reference::my_pow(base, exponent)))
        << base << " to the " << exponent;
  }
}

TEST(FastMathReference, Round) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float magnitude = arguments.between(1e-3F, 2e9F);
    const float v = i % 2 == 0 ? magnitude : -magnitude;
    ASSERT_EQ(my_round(v), reference::my_round(v)) << v;
  }
}

TEST(FastMathReference, RoundAtEveryHalfAndItsNeighbours) {
  for (int half = -2001; half <= 2001; half += 2) {
    const float v = static_cast<float>(half) / 2.0F;
    for (const float w : {v, fromBits(bits(v) - 1U), fromBits(bits(v) + 1U)}) {
      ASSERT_EQ(my_round(w), reference::my_round(w)) << w;
    }
  }
}

TEST(FastMathReference, ClampAndBounds) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const int v = arguments.integer(-20, 20);
    const int lo = arguments.integer(-20, 20);
    const int hi = arguments.integer(-20, 20);
    ASSERT_EQ(myClamp(v, lo, hi), reference::myClamp(v, lo, hi)) << v << ", " << lo << ", " << hi;
    ASSERT_EQ(isWithinBounds(v, lo, hi, 7), reference::isWithinBounds(v, lo, hi, 7))
        << v << ", " << lo << ", " << hi;
  }
}

}  // namespace
}  // namespace wren::stencil
