// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The reference implementation of the bitmap against examples computed by hand. All other expected
// values for bitmaps come from it, so nothing else would show an error in it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/reference/cximage.h"

namespace {

using reference::CxImage;
using Bytes = std::vector<std::uint8_t>;

void load(CxImage& image, std::uint32_t width, std::uint32_t height, const Bytes& levels) {
  ASSERT_TRUE(image.CreateFromArray(levels.data(), width, height, 8, width, false));
}

Bytes pixelsOf(const CxImage& image) {
  Bytes result;
  for (int y = 0; y < image.GetHeight(); ++y)
    for (int x = 0; x < image.GetWidth(); ++x) result.push_back(image.GetPixelIndex(x, y));
  return result;
}

Bytes dithered(std::uint32_t width, std::uint32_t height, const Bytes& levels,
               std::int64_t method) {
  CxImage image;
  load(image, width, height, levels);
  EXPECT_TRUE(image.Dither(method));
  return pixelsOf(image);
}

TEST(ReferenceBitmap, SizesOfSmallImages) {
  CxImage image;
  ASSERT_NE(image.Create(10, 3, 1, 7), nullptr);
  EXPECT_EQ(image.GetNumColors(), 2U);
  EXPECT_EQ(image.info.effectiveWidth, 4U);
  EXPECT_EQ(image.header.imageSize, 12U);
  EXPECT_EQ(image.GetSize(), 60U);
  EXPECT_EQ(image.info.imageType, 7U);
  ASSERT_NE(image.Create(10, 3, 5, 0), nullptr);
  EXPECT_EQ(image.GetNumColors(), 256U);
  EXPECT_EQ(image.info.effectiveWidth, 12U);
  ASSERT_NE(image.Create(3, 1, 24, 0), nullptr);
  EXPECT_EQ(image.info.effectiveWidth, 12U);
  EXPECT_EQ(image.GetBits(1), nullptr);
}

TEST(ReferenceBitmap, CreationFailsWithItsTexts) {
  CxImage image;
  EXPECT_EQ(image.Create(0, 1, 8, 0), nullptr);
  EXPECT_EQ(std::string(image.GetLastError()),
            "CxImage::Create : width and height must be greater than zero");
  EXPECT_EQ(image.Create(1U << 16, 1U << 16, 8, 0), nullptr);
  EXPECT_EQ(std::string(image.GetLastError()), "CXIMAGE_MAX_MEMORY exceeded");
  EXPECT_EQ(image.Create(1U << 15, 1U << 14, 8, 0), nullptr);
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetBits(0), nullptr);
}

TEST(ReferenceBitmap, OutOfRangeReadsTheFirstByteAndWritesNothing) {
  CxImage image;
  load(image, 2, 2, {9, 8, 7, 6});
  EXPECT_EQ(image.GetPixelIndex(-1, 0), 9);
  EXPECT_EQ(image.GetPixelIndex(2, 1), 9);
  image.SetPixelIndex(-1, 0, 1);
  image.SetPixelIndex(0, 2, 1);
  EXPECT_EQ(pixelsOf(image), (Bytes{9, 8, 7, 6}));
}

TEST(ReferenceBitmap, PackedPixels) {
  CxImage image;
  ASSERT_NE(image.Create(9, 1, 1, 0), nullptr);
  image.info.bits[0] = 0;
  image.info.bits[1] = 0;
  image.SetPixelIndex(0, 0, 255);
  image.SetPixelIndex(8, 0, 1);
  EXPECT_EQ(image.info.bits[0], 0x80);
  EXPECT_EQ(image.info.bits[1], 0x80);
  ASSERT_NE(image.Create(2, 1, 4, 0), nullptr);
  image.info.bits[0] = 0;
  image.SetPixelIndex(1, 0, 0x1F);
  EXPECT_EQ(image.info.bits[0], 0x0F);
  image.SetPixelIndex(0, 0, 0x1A);
  EXPECT_EQ(image.info.bits[0], 0xAF);
}

TEST(ReferenceBitmap, NearestColorOfBlackAndWhite) {
  CxImage image;
  ASSERT_NE(image.Create(1, 1, 1, 0), nullptr);
  image.SetGrayPalette();
  EXPECT_EQ(image.GetNearestIndex({127, 127, 127, 0}), 0);
  EXPECT_EQ(image.GetNearestIndex({128, 128, 128, 0}), 1);
}

TEST(ReferenceBitmap, RotatesMirrorsAndCentres) {
  CxImage image;
  load(image, 2, 2, {1, 2, 3, 4});
  EXPECT_TRUE(image.Rotate180(nullptr));
  EXPECT_EQ(pixelsOf(image), (Bytes{4, 3, 2, 1}));
  load(image, 3, 1, {1, 2, 3});
  image.Mirror();
  EXPECT_EQ(pixelsOf(image), (Bytes{3, 2, 1}));
  load(image, 4, 1, {1, 2, 3, 4});
  image.MakeCenter(7);
  EXPECT_EQ(image.GetWidth(), 7);
  EXPECT_EQ(image.GetPixelIndex(1, 0), 1);
  EXPECT_EQ(image.GetPixelIndex(4, 0), 4);
}

TEST(ReferenceBitmap, LightFollowsItsFormula) {
  CxImage image;
  load(image, 5, 1, {0, 54, 55, 128, 200});
  EXPECT_TRUE(image.Light(0, 0));
  EXPECT_EQ(pixelsOf(image), (Bytes{0, 54, 55, 128, 200}));
  EXPECT_TRUE(image.Light(0, 100));
  // (54 - 128) * 2 + 128.5 = -19.5 truncates to -19 and is clamped to 0.
  EXPECT_EQ(pixelsOf(image), (Bytes{0, 0, 0, 128, 255}));
  load(image, 3, 1, {0, 54, 55});
  EXPECT_TRUE(image.Light(200, 0));
  EXPECT_EQ(pixelsOf(image), (Bytes{200, 254, 255}));
  EXPECT_TRUE(image.Light(-28, -100));
  EXPECT_EQ(pixelsOf(image), (Bytes{100, 100, 100}));
}

TEST(ReferenceBitmap, LightSaturates) {
  CxImage image;
  load(image, 2, 1, {0, 255});
  EXPECT_TRUE(image.Light(2147483647, 0));
  EXPECT_EQ(pixelsOf(image), (Bytes{255, 255}));
  load(image, 2, 1, {0, 255});
  EXPECT_TRUE(image.Light(0, 2147483647));
  EXPECT_EQ(pixelsOf(image), (Bytes{0, 255}));
}

TEST(ReferenceBitmap, DepthsGrowOnly) {
  CxImage image;
  load(image, 2, 1, {200, 10});
  EXPECT_TRUE(image.IncreaseBpp(8));
  EXPECT_FALSE(image.IncreaseBpp(4));
  EXPECT_FALSE(image.IncreaseBpp(16));
  EXPECT_TRUE(image.Dither(0));
  EXPECT_TRUE(image.IncreaseBpp(8));
  EXPECT_EQ(pixelsOf(image), (Bytes{1, 0}));
  EXPECT_EQ(image.GetPaletteColor(1).red, 255);
  EXPECT_EQ(image.GetPaletteColor(2).red, 0);
  EXPECT_TRUE(image.IncreaseBpp(24));
  EXPECT_EQ(image.BlindGetPixelColor(0, 0).green, 255);
  EXPECT_EQ(image.BlindGetPixelColor(1, 0).green, 0);
}

TEST(ReferenceDither, FixedThresholdSplitsAt129) {
  EXPECT_EQ(dithered(3, 1, {128, 129, 255}, 0), (Bytes{0, 1, 1}));
}

TEST(ReferenceDither, OrderedHalfCoverage) {
  const Bytes half = dithered(4, 4, Bytes(16, 128), 1);
  EXPECT_EQ(half, (Bytes{1, 0, 1, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 1, 0, 1}));
  EXPECT_EQ(dithered(4, 4, Bytes(16, 255), 1), Bytes(16, 1));
  EXPECT_EQ(dithered(4, 4, Bytes(16, 0), 1), Bytes(16, 0));
}

TEST(ReferenceDither, BayerThresholdsAsListed) {
  const std::vector<int> thresholds = {0,  192, 48, 240, 128, 64, 176, 112,
                                       32, 224, 16, 208, 160, 96, 144, 80};
  for (int level = 0; level < 256; ++level) {
    const Bytes page = dithered(4, 4, Bytes(16, static_cast<std::uint8_t>(level)), 7);
    for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(page[i], level > thresholds[i] ? 1 : 0) << level;
  }
}

// Level 100 is black; its error term for the right neighbour is 100 * 7 / 16 = 43. 90 + 43 = 133 is
// white; its error is -122, the error term -53: 180 - 53 = 127 is black.
TEST(ReferenceDither, FloydSteinbergByHand) {
  for (const std::int64_t method : {std::int64_t{8}, std::int64_t{100}, std::int64_t{-1}})
    EXPECT_EQ(dithered(3, 1, {100, 90, 180}, method), (Bytes{0, 1, 0}));
  EXPECT_EQ(dithered(1, 1, {200}, 9), (Bytes{1}));
  // -55 * 7 / 16 truncates to -24, not to -25: 153 - 24 = 129 is white.
  EXPECT_EQ(dithered(2, 1, {200, 153}, 9), (Bytes{1, 1}));
  EXPECT_EQ(dithered(2, 1, {200, 152}, 9), (Bytes{1, 0}));
}

// The error term of the right neighbour is level * weight / divisor. 128 is black, so the smallest
// second level that becomes white is 129 minus that term.
TEST(ReferenceDither, ErrorTermOfTheRightNeighbour) {
  const struct {
    std::int64_t method;
    int weight;
    int divisor;
  } kRows[] = {{2, 8, 32}, {3, 8, 42}, {4, 7, 48}, {5, 5, 32}, {6, 0, 200}};
  for (const auto& row : kRows) {
    const int term = 128 * row.weight / row.divisor;
    const auto whiteFrom = static_cast<std::uint8_t>(129 - term);
    EXPECT_EQ(dithered(2, 1, {128, whiteFrom}, row.method), (Bytes{0, 1})) << row.method;
    EXPECT_EQ(dithered(2, 1, {128, static_cast<std::uint8_t>(whiteFrom - 1)}, row.method),
              (Bytes{0, 0}))
        << row.method;
  }
}

TEST(ReferenceDither, OneBitImageStaysAsItIs) {
  CxImage image;
  load(image, 2, 1, {200, 10});
  EXPECT_TRUE(image.Dither(0));
  const std::uint8_t* block = image.dib;
  EXPECT_TRUE(image.Dither(5));
  EXPECT_EQ(image.dib, block);
  CxImage empty;
  EXPECT_FALSE(empty.Dither(0));
}

}  // namespace
