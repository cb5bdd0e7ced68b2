// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <gtest/gtest.h>

#include <cstring>

#include "tests/bitmap/bitmap_fixtures.h"

namespace {

using namespace wren_test;

// The pixel bytes of row 0.
Bytes rowBytes(const CxImage& image, std::size_t count) {
  return Bytes(image.GetBits(0), image.GetBits(0) + count);
}

void clear(OpenImage& image) {
  std::memset(image.info.bits, 0, image.header.imageSize);
}

TEST(CxImagePixels, OneBitFillsFromTheTopBit) {
  OpenImage image;
  image.Create(10, 1, 1, 0);
  clear(image);
  image.SetPixelIndex(0, 0, 255);
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x80, 0x00}));
  image.SetPixelIndex(9, 0, 1);
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x80, 0x40}));
  image.SetPixelIndex(1, 0, 2);  // only the lowest bit counts
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x80, 0x40}));
  image.SetPixelIndex(0, 0, 0);
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x00, 0x40}));
  EXPECT_EQ(indexesOf(image), (Rows{{0, 0, 0, 0, 0, 0, 0, 0, 0, 1}}));
}

TEST(CxImagePixels, FourBitsFillFromTheHighNibble) {
  OpenImage image;
  image.Create(3, 1, 4, 0);
  clear(image);
  image.SetPixelIndex(1, 0, 0x1F);
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x0F, 0x00}));
  image.SetPixelIndex(0, 0, 0xA3);
  image.SetPixelIndex(2, 0, 7);
  EXPECT_EQ(rowBytes(image, 2), (Bytes{0x3F, 0x70}));
  EXPECT_EQ(indexesOf(image), (Rows{{3, 15, 7}}));
}

TEST(CxImagePixels, EightBitsAreWholeBytes) {
  OpenImage image;
  image.Create(3, 2, 8, 0);
  clear(image);
  image.SetPixelIndex(2, 1, 255);
  EXPECT_EQ(image.GetBits(1)[2], 255);
  EXPECT_EQ(image.GetPixelIndex(2, 1), 255);
}

TEST(CxImagePixels, OutsideReadsTheFirstByteAndWritesNothing) {
  CxImage image;
  makeGrey(image, {{77, 2}, {3, 4}});
  const Rows before = indexesOf(image);
  for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {2, 0}, {0, 2}, {-5, -5}}) {
    EXPECT_EQ(image.GetPixelIndex(x, y), 77) << x << ',' << y;
    image.SetPixelIndex(x, y, 9);
    EXPECT_EQ(indexesOf(image), before) << x << ',' << y;
  }
}

TEST(CxImagePixels, OutsideReadsTheWholeFirstByteAtAnyDepth) {
  OpenImage image;
  image.Create(2, 1, 1, 0);
  image.info.bits[0] = 0xC5;
  EXPECT_EQ(image.GetPixelIndex(2, 0), 0xC5);
}

TEST(CxImagePixels, AnEmptyImageReadsZero) {
  CxImage image;
  image.SetPixelIndex(0, 0, 5);
  EXPECT_EQ(image.GetPixelIndex(0, 0), 0);
  image.Create(4, 4, 8, 0);
  image.Destroy();
  image.SetPixelIndex(1, 1, 5);
  EXPECT_EQ(image.GetPixelIndex(1, 1), 0);
}

TEST(CxImagePixels, TwentyFourBitsHaveNoIndexes) {
  OpenImage image;
  image.Create(2, 1, 24, 0);
  clear(image);
  image.SetPixelIndex(0, 0, 200);
  image.BlindSetPixelIndex(0, 0, 200);
  EXPECT_EQ(rowBytes(image, 8), Bytes(8, 0));
  image.info.bits[0] = 200;
  EXPECT_EQ(image.GetPixelIndex(0, 0), 0);
  EXPECT_EQ(image.GetPixelIndex(-1, 0), 0);
  EXPECT_EQ(image.BlindGetPixelIndex(0, 0), 0);
}

TEST(CxImagePixels, ColoursOf24BitsAreStoredBlueGreenRed) {
  OpenImage image;
  image.Create(2, 1, 24, 0);
  clear(image);
  image.BlindSetPixelColor(1, 0, {1, 2, 3, 99});
  EXPECT_EQ(rowBytes(image, 6), (Bytes{0, 0, 0, 1, 2, 3}));
  EXPECT_EQ(image.BlindGetPixelColor(1, 0), (tagRGBQUAD{1, 2, 3, 0}));
}

TEST(CxImagePixels, ColoursOfAPaletteImageGoThroughThePalette) {
  CxImage image;
  makeIndexed(image, 4, {{0, 0}});
  image.BlindSetPixelColor(1, 0, {50, 52, 51, 0});  // nearest to 3 * 17
  EXPECT_EQ(indexesOf(image), (Rows{{0, 3}}));
  EXPECT_EQ(image.BlindGetPixelColor(1, 0), (tagRGBQUAD{51, 51, 51, 0}));
}

}  // namespace
