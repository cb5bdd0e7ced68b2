// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <gtest/gtest.h>

#include "tests/bitmap/bitmap_fixtures.h"

namespace {

using namespace wren_test;

TEST(CxImageRotate180, AppliedTwiceRestoresTheImage) {
  CxImage image;
  makeGrey(image, {{1, 2}, {3, 4}});
  EXPECT_TRUE(image.Rotate180());
  EXPECT_EQ(indexesOf(image), (Rows{{4, 3}, {2, 1}}));
  EXPECT_TRUE(image.Rotate180(nullptr));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 2}, {3, 4}}));
}

TEST(CxImageRotate180, KeepsTheSourceWhenThereIsADestination) {
  CxImage image;
  makeGrey(image, {{1, 2, 3}});
  CxImage rotated;
  rotated.Create(9, 9, 1, 0);
  EXPECT_TRUE(image.Rotate180(&rotated));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 2, 3}}));
  EXPECT_EQ(indexesOf(rotated), (Rows{{3, 2, 1}}));
}

TEST(CxImageRotate180, GivesEightBitsAtEveryDepth) {
  for (const std::uint32_t depth : {1U, 4U}) {
    OpenImage image;
    makeIndexed(image, depth, {{1, 0, 0}, {0, 1, 0}});
    EXPECT_TRUE(image.Rotate180());
    EXPECT_EQ(image.header.bitsPerPixel, 8);
    EXPECT_EQ(indexesOf(image), (Rows{{0, 1, 0}, {0, 0, 1}}));
    EXPECT_EQ(image.GetPaletteColor(1).red, depth == 1 ? 255 : 17);
    EXPECT_EQ(image.GetPaletteColor(16), tagRGBQUAD{});
  }
  OpenImage deep;
  const Bytes pixels(12, 99);
  deep.CreateFromArray(pixels.data(), 2, 2, 24, 6, false);
  EXPECT_TRUE(deep.Rotate180());
  EXPECT_EQ(deep.header.bitsPerPixel, 8);
  EXPECT_EQ(indexesOf(deep), (Rows{{0, 0}, {0, 0}}));
  EXPECT_EQ(deep.GetPaletteColor(255), tagRGBQUAD{});
}

TEST(CxImageRotate180, WithoutMemoryEmptiesTheTargetAndReturnsTrue) {
  grantedAllocations = 1;
  CxImage image(allocateUntilSpent);
  makeGrey(image, {{1, 2}});
  EXPECT_TRUE(image.Rotate180());
  EXPECT_FALSE(image.IsValid());
}

TEST(CxImageMirror, ReversesEveryRow) {
  CxImage image;
  makeGrey(image, {{1, 2, 3}, {4, 5, 6}});
  image.Mirror();
  EXPECT_EQ(indexesOf(image), (Rows{{3, 2, 1}, {6, 5, 4}}));
}

TEST(CxImageMirror, StaysInsideItsBuffersAtEveryDepth) {
  for (const std::uint32_t depth : {1U, 4U, 24U}) {
    for (std::uint32_t width = 1; width < 40; ++width) {
      OpenImage image;
      const Bytes pixels(width * 3 * 2, 0x5A);
      ASSERT_TRUE(image.CreateFromArray(pixels.data(), width, 2, depth, width * 3, false));
      image.Mirror();
      EXPECT_EQ(image.header.bitsPerPixel, 8);
      EXPECT_EQ(image.GetWidth(), static_cast<int>(width));
    }
  }
}

TEST(CxImageMirror, WithoutMemoryEmptiesTheImage) {
  grantedAllocations = 1;
  CxImage image(allocateUntilSpent);
  makeGrey(image, {{1, 2}});
  image.Mirror();
  EXPECT_FALSE(image.IsValid());
}

TEST(CxImageMakeCenter, CentresThePicture) {
  CxImage image;
  makeGrey(image, {{1, 2, 3, 4}, {5, 6, 7, 8}});
  image.MakeCenter(7);
  EXPECT_EQ(image.GetWidth(), 7);
  for (int x = 0; x < 4; ++x) {
    EXPECT_EQ(image.GetPixelIndex(1 + x, 0), 1 + x);
    EXPECT_EQ(image.GetPixelIndex(1 + x, 1), 5 + x);
  }
}

TEST(CxImageMakeCenter, DoesNothingUnlessItWidens) {
  OpenImage image;
  makeIndexed(image, 4, {{1, 2, 3, 4}});
  const void* block = image.dib;
  for (const int width : {4, 3, 0, -7}) image.MakeCenter(width);
  EXPECT_EQ(image.dib, block);
  EXPECT_EQ(image.header.bitsPerPixel, 4);
}

TEST(CxImageMakeCenter, WithoutMemoryEmptiesTheImage) {
  grantedAllocations = 1;
  CxImage image(allocateUntilSpent);
  makeGrey(image, {{1, 2}});
  image.MakeCenter(5);
  EXPECT_FALSE(image.IsValid());
}

TEST(CxImageNegative, InvertsEveryByteOfTheRows) {
  const Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8};
  OpenImage image;
  ASSERT_TRUE(image.CreateFromArray(pixels.data(), 3, 2, 8, 4, false));
  image.Negative();
  EXPECT_EQ(Bytes(image.info.bits, image.info.bits + 8),
            (Bytes{254, 253, 252, 251, 250, 249, 248, 247}));
  EXPECT_EQ(image.GetPaletteColor(7), (tagRGBQUAD{7, 7, 7, 0}));
  image.Negative();
  EXPECT_EQ(Bytes(image.info.bits, image.info.bits + 8), pixels);
}

TEST(CxImageNegative, SwapsTheIndexesOfOneBit) {
  CxImage image;
  makeIndexed(image, 1, {{1, 0, 1}});
  image.Negative();
  EXPECT_EQ(indexesOf(image), (Rows{{0, 1, 0}}));
}

// The whole tone curve is tested in tests/dither/tone_table_test.cpp.
TEST(CxImageLight, MapsIndexesByBrightnessAndContrast) {
  CxImage image;
  makeGrey(image, {{0, 100, 128, 200}});
  EXPECT_TRUE(image.Light(0, 0));
  EXPECT_EQ(indexesOf(image), (Rows{{0, 100, 128, 200}}));
  EXPECT_TRUE(image.Light(10, 100));
  EXPECT_EQ(indexesOf(image), (Rows{{0, 82, 138, 255}}));
  EXPECT_TRUE(image.Light(-100));
  EXPECT_EQ(indexesOf(image), (Rows{{0, 0, 38, 155}}));
}

TEST(CxImageLut, MapsIndexesAtEveryDepth) {
  Bytes table(256, 0);
  for (std::size_t i = 0; i < 256; ++i) table[i] = static_cast<std::uint8_t>(255 - i);
  CxImage eight;
  makeIndexed(eight, 8, {{0, 100, 255}});
  EXPECT_TRUE(eight.Lut(table.data()));
  EXPECT_EQ(indexesOf(eight), (Rows{{255, 155, 0}}));
  CxImage four;
  makeIndexed(four, 4, {{0, 5, 15}});
  EXPECT_TRUE(four.Lut(table.data()));
  EXPECT_EQ(indexesOf(four), (Rows{{15, 10, 0}}));
  CxImage one;
  makeIndexed(one, 1, {{0, 1, 1, 0, 1, 0, 1, 1, 0}});
  EXPECT_TRUE(one.Lut(table.data()));
  EXPECT_EQ(indexesOf(one), (Rows{{1, 0, 0, 1, 0, 1, 0, 0, 1}}));
}

TEST(CxImageLut, ChangesNothingAt24Bits) {
  const Bytes table(256, 1);
  const Bytes pixels = {10, 20, 30, 40, 50, 60};
  CxImage image;
  image.CreateFromArray(pixels.data(), 2, 1, 24, 6, false);
  EXPECT_TRUE(image.Lut(table.data()));
  EXPECT_EQ(Bytes(image.GetBits(0), image.GetBits(0) + 6), pixels);
}

TEST(CxImageLut, RefusesNoTable) {
  CxImage image;
  makeGrey(image, {{1}});
  EXPECT_FALSE(image.Lut(nullptr));
}

TEST(CxImageIncreaseBpp, ChangesNothingAtTheSameDepth) {
  for (const std::uint32_t depth : {4U, 8U, 24U}) {
    OpenImage image;
    image.Create(3, 2, depth, 0);
    const void* block = image.dib;
    EXPECT_TRUE(image.IncreaseBpp(depth));
    EXPECT_EQ(image.dib, block);
  }
}

TEST(CxImageIncreaseBpp, RefusesALowerDepth) {
  struct Depths {
    std::uint32_t from, to;
  };
  for (const auto& [from, to] : {Depths{8, 4}, Depths{24, 4}, Depths{24, 8}}) {
    OpenImage image;
    image.Create(3, 2, from, 0);
    const void* block = image.dib;
    EXPECT_FALSE(image.IncreaseBpp(to));
    EXPECT_EQ(image.dib, block);
    EXPECT_STREQ(image.GetLastError(), "");
  }
}

TEST(CxImageIncreaseBpp, RefusesDepthsOtherThan4And8And24) {
  CxImage image;
  makeIndexed(image, 1, {{1}});
  for (const std::uint32_t depth : {0U, 1U, 2U, 16U, 32U}) EXPECT_FALSE(image.IncreaseBpp(depth));
}

TEST(CxImageIncreaseBpp, KeepsIndexesAndPalette) {
  const Rows picture = {{1, 0, 1, 1, 0}, {0, 1, 1, 0, 1}};
  for (const std::uint32_t depth : {4U, 8U}) {
    OpenImage image;
    makeIndexed(image, 1, picture);
    image.SetPaletteColor(0, 1, 2, 3, 4);
    EXPECT_TRUE(image.IncreaseBpp(depth));
    EXPECT_EQ(image.header.bitsPerPixel, depth);
    EXPECT_EQ(indexesOf(image), picture);
    EXPECT_EQ(image.GetPaletteColor(0), (tagRGBQUAD{3, 2, 1, 4}));
    EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{255, 255, 255, 0}));
    EXPECT_EQ(image.GetPaletteColor(2), tagRGBQUAD{});
  }
  CxImage four;
  makeIndexed(four, 4, {{9, 15, 3}});
  EXPECT_TRUE(four.IncreaseBpp(8));
  EXPECT_EQ(indexesOf(four), (Rows{{9, 15, 3}}));
}

TEST(CxImageIncreaseBpp, TurnsIndexesIntoColoursAt24Bits) {
  CxImage image;
  makeIndexed(image, 1, {{0, 1}});
  image.SetPaletteColor(0, 1, 2, 3, 4);
  EXPECT_TRUE(image.IncreaseBpp(24));
  EXPECT_EQ(Bytes(image.GetBits(0), image.GetBits(0) + 6), (Bytes{3, 2, 1, 255, 255, 255}));
  EXPECT_EQ(image.GetNumColors(), 0U);
}

TEST(CxImageIncreaseBpp, WithoutMemoryKeepsTheImageAndItsErrorText) {
  grantedAllocations = 1;
  CxImage image(allocateUntilSpent);
  makeIndexed(image, 1, {{1, 0}});
  EXPECT_FALSE(image.IncreaseBpp(8));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 0}}));
  EXPECT_STREQ(image.GetLastError(), "CxImage::Create can't allocate memory");
}

TEST(CxImageTransforms, LeaveAnEmptyImageAlone) {
  const Bytes table(256, 0);
  CxImage image;
  EXPECT_FALSE(image.Rotate180());
  EXPECT_FALSE(image.Light(1, 1));
  EXPECT_FALSE(image.Lut(table.data()));
  EXPECT_FALSE(image.IncreaseBpp(8));
  image.Mirror();
  image.MakeCenter(5);
  image.Negative();
  EXPECT_FALSE(image.IsValid());
}

}  // namespace
