// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/recipe.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace wren::stencil {
namespace {

std::uint32_t bits(float v) {
  return std::bit_cast<std::uint32_t>(v);
}

TEST(Recipe, SinglePrecisionConstantsAreExact) {
  struct Row {
    const char* name;
    float value;
    std::uint32_t bits;
  };
  constexpr Row kRows[] = {
      {"red weight", kRedWeight, 0x3E991687},
      {"green weight", kGreenWeight, 0x3F1645A2},
      {"blue weight", kBlueWeight, 0x3DE978D5},
      {"gamma below the knee", kGammaBelowKnee, 0x3F59999A},
      {"gamma above the knee", kGammaAboveKnee, 0x3F333333},
      {"unsharp amount", kUnsharpAmountPercent, 0x43960000},
      {"percent", kPercent, 0x42C80000},
      {"white", kWhite, 0x437F0000},
      {"neighbour step", kNeighbourStep, 0x3E121FF3},
  };
  for (const Row& row : kRows) EXPECT_EQ(bits(row.value), row.bits) << row.name;
}

TEST(Recipe, OtherConstantsAreExact) {
  EXPECT_EQ(kFallbackThreshold, 128);
  EXPECT_EQ(kKnee, 64);
  EXPECT_EQ(kUnsharpSize, 11);
  EXPECT_EQ(kUnsharpSigma, 3.0);
}

TEST(Recipe, DiffusionTapsAreExact) {
  struct Row {
    int dx;
    int dy;
    std::uint32_t bits;
  };
  constexpr Row kRows[] = {{1, 0, 0x3F017B31},  {2, 0, 0xBD58C8EF}, {-2, 1, 0x3E679F66},
                           {-1, 1, 0x3E03ED52}, {0, 1, 0x3E790710}, {1, 1, 0xBDE37CDD}};
  ASSERT_EQ(std::size(kDiffusionTaps), std::size(kRows));
  for (std::size_t k = 0; k < std::size(kRows); ++k) {
    EXPECT_EQ(kDiffusionTaps[k].dx, kRows[k].dx) << k;
    EXPECT_EQ(kDiffusionTaps[k].dy, kRows[k].dy) << k;
    EXPECT_EQ(bits(kDiffusionTaps[k].weight), kRows[k].bits) << k;
  }
}

TEST(Recipe, DiffusionDropsSixPercentOfTheError) {
  float sum = 0.0F;
  for (const DiffusionTap& tap : kDiffusionTaps) sum += tap.weight;
  EXPECT_NEAR(sum, 0.940002F, 1e-6F);
}

TEST(Recipe, SharpensWithFourTimesTheLevelMinusThreeTimesTheBlur) {
  EXPECT_EQ(kLevelGain, 4.0F);
  EXPECT_EQ(kBlurGain, 3.0F);
}

TEST(Recipe, WhiteCountsLessForEachBlackNeighbour) {
  constexpr float kExpected[] = {255.0F, 218.61F, 182.22F};
  for (int black = 0; black < 3; ++black) {
    const float level = std::bit_cast<float>(kWhiteBits - black * kNeighbourCorrection);
    EXPECT_NEAR(level, kExpected[black], 0.005F) << black << " black neighbours";
  }
}

}  // namespace
}  // namespace wren::stencil
