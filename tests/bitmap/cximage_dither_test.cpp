// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What `CxImage::Dither` makes of the image. Its dots are compared with the reference
// implementation in cximage_comparison_test.cpp.

#include <gtest/gtest.h>

#include "tests/bitmap/bitmap_fixtures.h"

namespace {

using namespace wren_test;

TEST(CxImageDither, GivesABlackAndWhiteBitmap) {
  OpenImage image;
  image.Create(9, 2, 8, 42);
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 9; ++x) image.SetPixelIndex(x, y, 255);
  }
  ASSERT_TRUE(image.Dither(0));
  EXPECT_EQ(image.header.bitsPerPixel, 1);
  EXPECT_EQ(image.info.imageType, 42U);
  EXPECT_EQ(image.GetPaletteColor(0), (tagRGBQUAD{0, 0, 0, 0}));
  EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{255, 255, 255, 0}));
  EXPECT_EQ(indexesOf(image), Rows(2, Bytes(9, 1)));
}

TEST(CxImageDither, LeavesOneBitAsItIs) {
  OpenImage image;
  makeIndexed(image, 1, {{1, 0, 1}});
  image.SetPaletteColor(0, 9, 9, 9, 9);
  const void* block = image.dib;
  EXPECT_TRUE(image.Dither(4));
  EXPECT_EQ(image.dib, block);
  EXPECT_EQ(image.GetPaletteColor(0), (tagRGBQUAD{9, 9, 9, 9}));
}

TEST(CxImageDither, RefusesAnEmptyImage) {
  CxImage image;
  EXPECT_FALSE(image.Dither(0));
  EXPECT_FALSE(image.IsValid());
}

// The first allocation is the image's own, the second that of the result, the third the
// working memory of error diffusion.
TEST(CxImageDither, WithoutMemoryKeepsTheImageAndItsErrorText) {
  struct Case {
    int method, granted;
  };
  for (const auto& [method, granted] :
       {Case{0, 1}, Case{1, 1}, Case{2, 1}, Case{2, 2}, Case{3, 2}, Case{4, 2}, Case{5, 2},
        Case{6, 2}, Case{7, 1}, Case{8, 1}, Case{8, 2}}) {
    grantedAllocations = granted;
    CxImage image(allocateUntilSpent);
    makeGrey(image, {{10, 200}, {130, 40}});
    EXPECT_FALSE(image.Dither(method)) << method;
    EXPECT_EQ(indexesOf(image), (Rows{{10, 200}, {130, 40}})) << method;
    EXPECT_STREQ(image.GetLastError(), "CxImage::Create can't allocate memory") << method;
  }
}

TEST(CxImageDither, ThenIncreaseBppGivesBytesOfZeroAndOne) {
  OpenImage image;
  makeGrey(image, {{0, 255, 0}});
  ASSERT_TRUE(image.Dither(0));
  ASSERT_TRUE(image.IncreaseBpp(8));
  EXPECT_EQ(indexesOf(image), (Rows{{0, 1, 0}}));
  EXPECT_EQ(image.GetPaletteColor(0), (tagRGBQUAD{0, 0, 0, 0}));
  EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{255, 255, 255, 0}));
  for (int i = 2; i < 256; ++i) {
    EXPECT_EQ(image.GetPaletteColor(static_cast<std::uint8_t>(i)), tagRGBQUAD{}) << i;
  }
}

}  // namespace
