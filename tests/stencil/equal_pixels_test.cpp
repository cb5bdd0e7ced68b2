// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/equal_pixels.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace wren::stencil {
namespace {

using Pixels = std::vector<std::uint8_t>;

TEST(EqualPixels, FindsOneDifferentPixelAtAnyPlace) {
  Pixels pixels(16, 77);
  EXPECT_TRUE(areEightEqual(pixels.data()));
  EXPECT_TRUE(areSixteenEqual(pixels.data()));
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = 78;
    EXPECT_EQ(areEightEqual(pixels.data()), i >= 8) << i;
    EXPECT_FALSE(areSixteenEqual(pixels.data())) << i;
    pixels[i] = 77;
  }
}

// A rotation by more than one pixel would not change these.
TEST(EqualPixels, AreNotThoseOfARepeatedPattern) {
  const Pixels patterns[] = {{1, 2, 1, 2, 1, 2, 1, 2}, {1, 1, 2, 2, 1, 1, 2, 2}};
  for (const Pixels& pattern : patterns) {
    EXPECT_FALSE(areEightEqual(pattern.data())) << testing::PrintToString(pattern);
  }
}

}  // namespace
}  // namespace wren::stencil
