// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/level_counter.h"

#include <gtest/gtest.h>

#include "stencil/pixel_run.h"
#include "tests/stencil/test_pages.h"

namespace {

TEST(LevelCounter, EqualsTheCountOfSinglePixels) {
  PageMaker maker(4);
  for (const PageKind kind : kPageKinds) {
    for (int width = 1; width <= 70; ++width) {
      const QVImage page = maker.make(kind, width, 9);
      stencil::LevelCounter counter;
      for (int y = 0; y < 9; ++y) counter.add_row(page.data + y * width, width);
      ASSERT_EQ(counter.counts(), count_levels(page)) << width;
    }
  }
}

TEST(PixelRun, SeesOneDifferentPixel) {
  Bytes pixels(16, 77);
  EXPECT_TRUE(stencil::are_eight_equal(pixels.data()));
  EXPECT_TRUE(stencil::are_sixteen_equal(pixels.data()));
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = 78;
    EXPECT_EQ(stencil::are_eight_equal(pixels.data()), i >= 8) << i;
    EXPECT_FALSE(stencil::are_sixteen_equal(pixels.data())) << i;
    pixels[i] = 77;
  }
}

// Eight bytes that repeat with a period of two or four are not alike.
TEST(PixelRun, IsNotFooledByPeriods) {
  const Bytes two = {1, 2, 1, 2, 1, 2, 1, 2};
  const Bytes four = {1, 1, 2, 2, 1, 1, 2, 2};
  EXPECT_FALSE(stencil::are_eight_equal(two.data()));
  EXPECT_FALSE(stencil::are_eight_equal(four.data()));
}

}  // namespace
