// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The helpers against their literal versions, a million arguments each, all of
// them inside the domain on which the iterations end.

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

#include "stencil/fast_math.h"
#include "tests/reference/stencil.h"

namespace {

constexpr int kArguments = 1'000'000;
constexpr std::uint32_t kInfinityBits = 0x7F800000U;

std::uint32_t bits(float v) {
  return std::bit_cast<std::uint32_t>(v);
}

class Arguments {
 public:
  // Any float but NaN and the infinities, all bit patterns equally likely.
  float anyFinite() {
    auto pattern = random_();
    while ((pattern & kInfinityBits) == kInfinityBits) pattern = random_();
    return std::bit_cast<float>(static_cast<std::uint32_t>(pattern));
  }

  // Between two positive floats; bit patterns are equally likely, so every binade is.
  float between(float low, float high) {
    return std::bit_cast<float>(
        std::uniform_int_distribution<std::uint32_t>(bits(low), bits(high))(random_));
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
  for (const float v : {std::bit_cast<float>(2U), std::bit_cast<float>(3U),
                        std::numeric_limits<float>::min(), std::numeric_limits<float>::max()}) {
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

TEST(FastMathReference, LnOfTinyArgumentsTakesManySteps) {
  for (const float v : {9e-3F, 1.0F / 191.0F, 1e-3F, 2.5e-4F, 1e-4F, 1e-5F}) {
    EXPECT_EQ(bits(my_ln(v)), bits(reference::my_ln(v))) << v;
  }
}

TEST(FastMathReference, PowOfThePipelinesBases) {
  Arguments arguments;
  for (int i = 0; i < kArguments; ++i) {
    const float base = arguments.between(1.0F / 191.0F, 1.0F);
    const float exponent = arguments.between(0.01F, 4.0F);
    ASSERT_EQ(bits(my_pow(base, exponent)), bits(reference::my_pow(base, exponent)))
        << base << " to the " << exponent;
  }
}

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
    for (const float w :
         {v, std::bit_cast<float>(bits(v) - 1U), std::bit_cast<float>(bits(v) + 1U)}) {
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
    ASSERT_EQ(myClamp(v, lo, hi), reference::myClamp(v, lo, hi));
    ASSERT_EQ(isWithinBounds(v, lo, hi, 7), reference::isWithinBounds(v, lo, hi, 7));
  }
}

}  // namespace
