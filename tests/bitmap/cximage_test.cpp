// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bitmap/cximage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <type_traits>

#include "tests/bitmap/bitmap_fixtures.h"

namespace {

using namespace wren_test;

constexpr const char* kZeroSize = "CxImage::Create : width and height must be greater than zero";
constexpr const char* kTooLarge = "CXIMAGE_MAX_MEMORY exceeded";
constexpr const char* kNoMemory = "CxImage::Create can't allocate memory";

TEST(CxImage, IsNotCopyable) {
  EXPECT_FALSE(std::is_copy_constructible_v<CxImage>);
  EXPECT_FALSE(std::is_copy_assignable_v<CxImage>);
}

TEST(CxImage, StartsAllZero) {
  const OpenImage image;
  EXPECT_EQ(bytesOf(image.header), Bytes(40, 0));
  EXPECT_EQ(image.info.effectiveWidth, 0U);
  EXPECT_EQ(image.info.bits, nullptr);
  EXPECT_EQ(image.info.imageType, 0U);
  EXPECT_EQ(image.info.lastError, (std::array<char, 256>{}));
  EXPECT_FALSE(image.info.nearestCacheValid);
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_EQ(image.GetPalette(), nullptr);
  EXPECT_STREQ(image.GetLastError(), "");
}

struct Made {
  std::uint32_t width, height, askedDepth;  // what Create is asked for
  std::uint32_t depth, colors, stride, imageSize, blockSize;
};

void PrintTo(const Made& made, std::ostream* out) {
  *out << made.width << " x " << made.height << ", depth " << made.askedDepth;
}

class CxImageCreate : public testing::TestWithParam<Made> {};

TEST_P(CxImageCreate, FillsTheHeaderAndTheSizes) {
  const Made& made = GetParam();
  OpenImage image;
  ASSERT_NE(image.Create(made.width, made.height, made.askedDepth, 7), nullptr);
  EXPECT_TRUE(image.IsValid());
  EXPECT_EQ(image.header.size, 40U);
  EXPECT_EQ(image.GetWidth(), static_cast<std::int32_t>(made.width));
  EXPECT_EQ(image.GetHeight(), static_cast<std::int32_t>(made.height));
  EXPECT_EQ(image.header.planes, 1);
  EXPECT_EQ(image.header.bitsPerPixel, made.depth);
  EXPECT_EQ(image.header.compression, 0U);
  EXPECT_EQ(image.header.imageSize, made.imageSize);
  EXPECT_EQ(image.header.horizontalResolution, 0);
  EXPECT_EQ(image.header.verticalResolution, 0);
  EXPECT_EQ(image.GetNumColors(), made.colors);
  EXPECT_EQ(image.GetPaletteSize(), made.colors * 4);
  EXPECT_EQ(image.header.colorsImportant, 0U);
  EXPECT_EQ(image.info.effectiveWidth, made.stride);
  EXPECT_EQ(image.info.imageType, 7U);
  EXPECT_EQ(image.GetSize(), made.blockSize);
}

TEST_P(CxImageCreate, LaysTheBlockOutAsHeaderPaletteRows) {
  const Made& made = GetParam();
  OpenImage image;
  const auto* block =
      static_cast<std::uint8_t*>(image.Create(made.width, made.height, made.askedDepth, 7));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(Bytes(block, block + 40), bytesOf(image.header));
  const Bytes blank(made.colors * 4, 0);
  EXPECT_EQ(Bytes(block + 40, block + 40 + blank.size()), blank);
  EXPECT_EQ(image.GetBits(0), block + 40 + blank.size());
  EXPECT_EQ(image.info.bits, image.GetBits(0));
  EXPECT_EQ(image.GetBits(made.height - 1), image.GetBits(0) + (made.height - 1) * made.stride);
  EXPECT_EQ(image.GetBits(made.height), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, CxImageCreate,
    testing::Values(Made{10, 3, 1, 1, 2, 4, 12, 60}, Made{10, 3, 0, 1, 2, 4, 12, 60},
                    Made{10, 3, 5, 8, 256, 12, 36, 40 + 1024 + 36},
                    Made{9, 2, 2, 4, 16, 8, 16, 40 + 64 + 16},
                    Made{8, 2, 4, 4, 16, 4, 8, 40 + 64 + 8}, Made{3, 1, 24, 24, 0, 12, 12, 52},
                    Made{3, 1, 9, 24, 0, 12, 12, 52}, Made{1, 1, 32, 24, 0, 4, 4, 44},
                    Made{33, 1, 1, 1, 2, 8, 8, 56}));

TEST(CxImageCreate, RefusesAnEmptyPicture) {
  for (const auto& [width, height] : {std::pair{0U, 5U}, {5U, 0U}, {0U, 0U}}) {
    CxImage image;
    EXPECT_EQ(image.Create(width, height, 8, 0), nullptr);
    EXPECT_FALSE(image.IsValid());
    EXPECT_STREQ(image.GetLastError(), kZeroSize);
  }
}

TEST(CxImageCreate, RefusesAProductThatWraps32Bits) {
  struct Size {
    std::uint32_t width, height, depth;
  };
  for (const Size& size : {Size{65536, 8193, 8},     // the product with the depth wraps
                           Size{0x20000000, 1, 8},   // to 0
                           Size{0x10000000, 1, 24},  //
                           Size{65536, 65536, 1},    // width * height wraps to 0
                           Size{65536, 65537, 8},    // and to a small picture
                           Size{0x80000000, 2, 8},   //
                           Size{0xFFFFFFFF, 0xFFFFFFFF, 24}}) {
    CxImage image;
    EXPECT_EQ(image.Create(size.width, size.height, size.depth, 0), nullptr);
    EXPECT_FALSE(image.IsValid());
    EXPECT_STREQ(image.GetLastError(), kTooLarge);
  }
}

// One pixel in a row of four bytes: the product fits 32 bits, the block does not.
TEST(CxImageCreate, RefusesABlockThatGetSizeCannotExpress) {
  OpenImage image;
  EXPECT_EQ(image.Create(1, 0x40000000, 1, 0), nullptr);
  EXPECT_FALSE(image.IsValid());
  EXPECT_STREQ(image.GetLastError(), kNoMemory);
}

TEST(CxImageCreate, WithoutMemoryFillsTheHeaderAndStaysEmpty) {
  grantedAllocations = 0;
  OpenImage image(allocateUntilSpent);
  EXPECT_EQ(image.Create(10, 3, 8, 7), nullptr);
  EXPECT_FALSE(image.IsValid());
  EXPECT_STREQ(image.GetLastError(), kNoMemory);
  EXPECT_EQ(image.GetWidth(), 10);
  EXPECT_EQ(image.GetHeight(), 3);
  EXPECT_EQ(image.info.effectiveWidth, 12U);
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_EQ(image.GetPixelIndex(0, 0), 0);
  EXPECT_EQ(image.GetNumColors(), 0U);
  EXPECT_EQ(image.GetPaletteSize(), 0U);
}

TEST(CxImageCreate, DestroysTheCurrentImageEvenWhenItFails) {
  CxImage image;
  ASSERT_NE(image.Create(4, 4, 8, 0), nullptr);
  EXPECT_EQ(image.Create(0, 4, 8, 0), nullptr);
  EXPECT_FALSE(image.IsValid());
}

TEST(CxImageCreate, KeepsTheLastErrorOnSuccess) {
  CxImage image;
  image.Create(0, 4, 8, 0);
  ASSERT_NE(image.Create(4, 4, 8, 0), nullptr);
  EXPECT_STREQ(image.GetLastError(), kZeroSize);
}

TEST(CxImageFromArray, CopiesGreyRowsWithTheirLevelsAsIndexes) {
  const Bytes source = {1, 2, 3, 4, 5,  99,  //
                        6, 7, 8, 9, 10, 99};
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 5, 2, 8, 6, false));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}));
  EXPECT_EQ(image.GetBits(0)[0], 1);
  EXPECT_EQ(image.GetPaletteColor(200), (tagRGBQUAD{200, 200, 200, 0}));
}

TEST(CxImageFromArray, FlipPutsTheFirstRowLast) {
  const Bytes source = {1, 2, 3, 4};
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 2, 2, 8, 2, true));
  EXPECT_EQ(indexesOf(image), (Rows{{3, 4}, {1, 2}}));
}

TEST(CxImageFromArray, CopiesOnlyTheBytesOfASourceLine) {
  const Bytes source = {1, 2, 3, 4};
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 4, 2, 8, 2, false));
  EXPECT_EQ(image.GetPixelIndex(1, 0), 2);
  EXPECT_EQ(image.GetPixelIndex(0, 1), 3);
  EXPECT_EQ(image.GetPixelIndex(1, 1), 4);
}

TEST(CxImageFromArray, NeverCopiesMoreThanARowHolds) {
  const Bytes source(2 * 100, 5);
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 3, 2, 8, 100, false));
  EXPECT_EQ(indexesOf(image), (Rows{{5, 5, 5}, {5, 5, 5}}));
}

TEST(CxImageFromArray, Takes1And4BitRowsAsTheyAre) {
  const Bytes bits = {0xA0, 0x40};
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(bits.data(), 3, 2, 1, 1, false));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 0, 1}, {0, 1, 0}}));
  EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{255, 255, 255, 0}));
  const Bytes nibbles = {0x12, 0x30};
  ASSERT_TRUE(image.CreateFromArray(nibbles.data(), 3, 1, 4, 2, false));
  EXPECT_EQ(indexesOf(image), (Rows{{1, 2, 3}}));
  EXPECT_EQ(image.GetPaletteColor(3), (tagRGBQUAD{51, 51, 51, 0}));
}

TEST(CxImageFromArray, DropsTheFourthByteOf32Bits) {
  const Bytes source = {1, 2, 3, 99, 4, 5, 6, 99};
  OpenImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 2, 1, 32, 8, false));
  EXPECT_EQ(image.header.bitsPerPixel, 24);
  EXPECT_EQ(image.BlindGetPixelColor(0, 0), (tagRGBQUAD{1, 2, 3, 0}));
  EXPECT_EQ(image.BlindGetPixelColor(1, 0), (tagRGBQUAD{4, 5, 6, 0}));
}

TEST(CxImageFromArray, RefusesNoSourceAndOtherDepths) {
  const Bytes source(64, 0);
  CxImage image;
  EXPECT_FALSE(image.CreateFromArray(nullptr, 2, 2, 8, 2, false));
  for (const std::uint32_t depth : {0U, 2U, 3U, 5U, 16U, 33U}) {
    EXPECT_FALSE(image.CreateFromArray(source.data(), 2, 2, depth, 8, false)) << depth;
  }
  EXPECT_FALSE(image.CreateFromArray(source.data(), 0, 2, 8, 8, false));
  EXPECT_FALSE(image.IsValid());
}

TEST(CxImageStorage, DestroyLeavesTheHeader) {
  OpenImage image;
  image.Create(4, 3, 8, 9);
  EXPECT_TRUE(image.Destroy());
  EXPECT_TRUE(image.Destroy());
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetWidth(), 4);
  EXPECT_EQ(image.info.imageType, 9U);
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_EQ(image.header.colorsUsed, 256U);
  EXPECT_EQ(image.GetNumColors(), 0U);
  EXPECT_EQ(image.GetPaletteSize(), 0U);
}

TEST(CxImageStorage, TransferMovesTheBlockAndEmptiesTheSource) {
  OpenImage from;
  makeGrey(from, {{1, 2}, {3, 4}});
  const void* block = from.dib;
  OpenImage to;
  to.Create(9, 9, 24, 3);
  EXPECT_TRUE(to.Transfer(from));
  EXPECT_EQ(to.dib, block);
  EXPECT_EQ(indexesOf(to), (Rows{{1, 2}, {3, 4}}));
  EXPECT_FALSE(from.IsValid());
  EXPECT_EQ(from.header.size, 0U);
  EXPECT_EQ(from.info.bits, nullptr);
  EXPECT_EQ(from.info.effectiveWidth, 0U);
}

TEST(CxImageStorage, CopyInfoIsOnlyForAnImageWithoutABlock) {
  OpenImage from;
  from.Create(0, 1, 8, 0);  // leaves an error text
  from.Create(5, 1, 8, 77);
  OpenImage fresh;
  fresh.CopyInfo(from);
  EXPECT_EQ(fresh.info.imageType, 77U);
  EXPECT_EQ(fresh.info.effectiveWidth, 8U);
  EXPECT_STREQ(fresh.GetLastError(), kZeroSize);
  OpenImage made;
  made.Create(1, 1, 8, 1);
  made.CopyInfo(from);
  EXPECT_EQ(made.info.imageType, 1U);
}

TEST(CxImagePalette, GreyStepsDivideEvenly) {
  struct Steps {
    std::uint32_t depth;
    std::uint8_t step;
  };
  for (const auto& [depth, step] : {Steps{1, 255}, Steps{4, 17}, Steps{8, 1}}) {
    CxImage image;
    image.Create(1, 1, depth, 0);
    image.GetPalette()[1].reserved = 9;
    image.SetGrayPalette();
    for (std::uint32_t i = 0; i < image.GetNumColors(); ++i) {
      const auto level = static_cast<std::uint8_t>(i * step);
      const auto kept = static_cast<std::uint8_t>(i == 1 ? 9 : 0);
      EXPECT_EQ(image.GetPalette()[i], (tagRGBQUAD{level, level, level, kept}));
    }
  }
}

TEST(CxImagePalette, SetPaletteCopiesNoMoreThanFits) {
  CxImage image;
  image.Create(1, 1, 1, 0);
  const tagRGBQUAD colors[] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 9, 9, 9}};
  image.SetPalette(colors, 1);
  EXPECT_EQ(image.GetPaletteColor(0), colors[0]);
  EXPECT_EQ(image.GetPaletteColor(1), tagRGBQUAD{});
  image.SetPalette(colors, 3);
  EXPECT_EQ(image.GetPaletteColor(1), colors[1]);
  image.SetPalette(nullptr, 2);
  EXPECT_EQ(image.GetPaletteColor(0), colors[0]);
}

TEST(CxImagePalette, SetPaletteColorTakesRedFirst) {
  CxImage image;
  image.Create(1, 1, 1, 0);
  image.SetPaletteColor(1, 10, 20, 30, 40);
  EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{30, 20, 10, 40}));
  image.SetPaletteColor(2, 1, 1, 1, 1);
  EXPECT_EQ(image.GetPaletteColor(2), tagRGBQUAD{});
}

TEST(CxImagePalette, IsAbsentAt24BitsAndInAnEmptyImage) {
  CxImage deep;
  deep.Create(2, 2, 24, 0);
  CxImage empty;
  for (CxImage* image : {&deep, &empty}) {
    const tagRGBQUAD color = {1, 2, 3, 4};
    image->SetPalette(&color, 1);
    image->SetGrayPalette();
    image->SetPaletteColor(0, 1, 2, 3, 4);
    EXPECT_EQ(image->GetPalette(), nullptr);
    EXPECT_EQ(image->GetPaletteColor(0), tagRGBQUAD{});
    EXPECT_EQ(image->GetNearestIndex(color), 0);
  }
}

tagRGBQUAD grey(std::uint8_t level) {
  return {level, level, level, 0};
}

TEST(CxImageNearest, PicksTheSmallestDistanceAndTheLowestIndex) {
  CxImage image;
  image.Create(1, 1, 1, 0);
  image.SetGrayPalette();
  EXPECT_EQ(image.GetNearestIndex(grey(127)), 0);  // 48387 against 49152
  EXPECT_EQ(image.GetNearestIndex(grey(128)), 1);
  image.SetPaletteColor(0, 10, 0, 0, 0);
  image.SetPaletteColor(1, 30, 0, 0, 0);
  EXPECT_EQ(image.GetNearestIndex({0, 0, 20, 0}), 0);
}

TEST(CxImageNearest, CachesTheLastAnswerWhenThePaletteChanges) {
  CxImage image;
  image.Create(1, 1, 1, 0);
  image.SetGrayPalette();
  EXPECT_EQ(image.GetNearestIndex(grey(255)), 1);
  image.SetPaletteColor(0, 255, 255, 255, 0);
  EXPECT_EQ(image.GetNearestIndex(grey(255)), 1);
  EXPECT_EQ(image.GetNearestIndex({255, 255, 255, 1}), 0);  // another colour for the cache
}

TEST(CxImageNearest, SearchesTheImportantColoursOnly) {
  OpenImage image;
  image.Create(1, 1, 8, 0);
  image.SetGrayPalette();
  image.header.colorsImportant = 10;
  EXPECT_EQ(image.GetNearestIndex(grey(200)), 9);
}

TEST(CxImageNearest, StaysInsideThePaletteWhenMoreColoursAreImportant) {
  OpenImage image;
  image.Create(1, 1, 1, 0);
  std::memset(image.GetBits(0), 200, 4);  // what follows the palette
  image.SetGrayPalette();
  image.header.colorsImportant = 3;
  EXPECT_EQ(image.GetNearestIndex({200, 200, 200, 200}), 1);
}

}  // namespace
