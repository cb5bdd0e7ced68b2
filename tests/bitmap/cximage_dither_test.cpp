// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <gtest/gtest.h>

#include "tests/bitmap/bitmap_fixtures.h"

namespace {

constexpr int kFloydSteinbergNumber = 8;

Rows flat(std::uint8_t level, std::size_t width, std::size_t height) {
  return Rows(height, Bytes(width, level));
}

Rows dithered(int method, const Rows& levels) {
  CxImage image;
  makeGrey(image, levels);
  EXPECT_TRUE(image.Dither(method));
  return indexesOf(image);
}

TEST(CxImageDither, GivesABlackAndWhiteBitmap) {
  OpenImage image;
  image.Create(9, 2, 8, 42);
  for (std::uint32_t y = 0; y < 2; ++y) {
    for (int x = 0; x < 9; ++x) image.SetPixelIndex(x, y, 255);
  }
  ASSERT_TRUE(image.Dither(0));
  EXPECT_EQ(image.header.bitsPerPixel, 1);
  EXPECT_EQ(image.info.imageType, 42u);
  EXPECT_EQ(image.GetPaletteColor(0), (tagRGBQUAD{0, 0, 0, 0}));
  EXPECT_EQ(image.GetPaletteColor(1), (tagRGBQUAD{255, 255, 255, 0}));
  EXPECT_EQ(indexesOf(image), flat(1, 9, 2));
}

TEST(CxImageDither, ThresholdTurnsWhiteAbove128) {
  EXPECT_EQ(dithered(0, flat(128, 5, 3)), flat(0, 5, 3));
  EXPECT_EQ(dithered(0, flat(129, 5, 3)), flat(1, 5, 3));
}

TEST(CxImageDither, OrderedCoversHalfAtLevel128) {
  EXPECT_EQ(dithered(1, flat(0, 6, 5)), flat(0, 6, 5));
  EXPECT_EQ(dithered(1, flat(255, 6, 5)), flat(1, 6, 5));
  EXPECT_EQ(dithered(1, flat(128, 8, 4)), (Rows{{1, 0, 1, 0, 1, 0, 1, 0},
                                                {0, 1, 0, 1, 0, 1, 0, 1},
                                                {1, 0, 1, 0, 1, 0, 1, 0},
                                                {0, 1, 0, 1, 0, 1, 0, 1}}));
}

TEST(CxImageDither, OrderedTurnsOnePixelOfTheCellWhitePerStep) {
  // level * 16 / 255 is 1 from level 16 on: the matrix entry 0 alone is below.
  EXPECT_EQ(dithered(1, flat(15, 4, 4)), flat(0, 4, 4));
  EXPECT_EQ(dithered(1, flat(16, 4, 4)),
            (Rows{{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
  // It is 15 from level 240 on: only the entry 15 is not below.
  EXPECT_EQ(dithered(1, flat(254, 4, 4)),
            (Rows{{1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}, {0, 1, 1, 1}}));
}

TEST(CxImageDither, BayerFollowsItsThresholds) {
  EXPECT_EQ(dithered(7, flat(0, 4, 4)), flat(0, 4, 4));
  EXPECT_EQ(dithered(7, flat(255, 6, 5)), flat(1, 6, 5));
  EXPECT_EQ(
      dithered(7, flat(1, 5, 5)),
      (Rows{{1, 0, 0, 0, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 0, 0, 0, 1}}));
  EXPECT_EQ(dithered(7, flat(128, 4, 4)),
            (Rows{{1, 0, 1, 0}, {0, 1, 0, 1}, {1, 0, 1, 0}, {0, 1, 0, 1}}));
  EXPECT_EQ(dithered(7, flat(129, 4, 4)),
            (Rows{{1, 0, 1, 0}, {1, 1, 0, 1}, {1, 0, 1, 0}, {0, 1, 0, 1}}));
}

TEST(CxImageDither, FloydSteinbergOfOnePixelDiffusesNothing) {
  EXPECT_EQ(dithered(kFloydSteinbergNumber, {{200}}), (Rows{{1}}));
}

// Level 100 sends 100 * 7 / 16 = 43 to the right: 86 + 43 = 129 turns white,
// 85 + 43 = 128 does not.
TEST(CxImageDither, FloydSteinbergAddsTheTruncatedShareOfABlackPixel) {
  EXPECT_EQ(dithered(kFloydSteinbergNumber, {{100, 86}}), (Rows{{0, 1}}));
  EXPECT_EQ(dithered(kFloydSteinbergNumber, {{100, 85}}), (Rows{{0, 0}}));
}

// Level 200 sends -55 * 7 / 16 = -24: 153 - 24 = 129 stays white, 152 does not.
TEST(CxImageDither, FloydSteinbergTruncatesNegativeSharesTowardZero) {
  EXPECT_EQ(dithered(kFloydSteinbergNumber, {{200, 153}}), (Rows{{1, 1}}));
  EXPECT_EQ(dithered(kFloydSteinbergNumber, {{200, 152}}), (Rows{{1, 0}}));
}

// What a black pixel of level 128 sends to the first tap of its own row.
struct FirstShare {
  int method;
  std::size_t dx;
  int share;
};

class CxImageDiffusion : public testing::TestWithParam<FirstShare> {};

// A receiver that the share lifts to 128 stays black, one level more is white.
TEST_P(CxImageDiffusion, SendsItsShareAlongTheRow) {
  const auto& [method, dx, share] = GetParam();
  for (const int above : {0, 1}) {
    Bytes levels(5, 0);
    levels[0] = 128;
    levels[dx] = static_cast<std::uint8_t>(128 - share + above);
    EXPECT_EQ(dithered(method, {levels})[0][dx], above);
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, CxImageDiffusion,
                         testing::Values(FirstShare{2, 1, 32}, FirstShare{3, 1, 24},
                                         FirstShare{4, 1, 18}, FirstShare{5, 1, 20},
                                         FirstShare{6, 2, 20}, FirstShare{8, 1, 56}));

TEST(CxImageDither, EveryOtherNumberIsFloydSteinberg) {
  Rows levels;
  for (int y = 0; y < 16; ++y) {
    Bytes row;
    for (int x = 0; x < 16; ++x) row.push_back(static_cast<std::uint8_t>(16 * y + x));
    levels.push_back(row);
  }
  const Rows expected = dithered(kFloydSteinbergNumber, levels);
  EXPECT_EQ(dithered(100, levels), expected);
  EXPECT_EQ(dithered(-1, levels), expected);
  EXPECT_NE(dithered(7, levels), expected);
}

// Two pixels at opposite borders of an otherwise black page, both as close to the threshold
// as they can be and each with the largest error there is. Neither may reach the other: a
// share that is not dropped at one border, but goes on in the row next to it, turns the
// pixel over there.
void expectNoShareAcross(int method, int level, std::size_t fromX, std::size_t toX,
                         std::size_t toY) {
  Rows levels = flat(0, 16, 6);
  levels[0][fromX] = static_cast<std::uint8_t>(level);
  levels[toY][toX] = static_cast<std::uint8_t>(level);
  const std::uint8_t isWhite = level > 128 ? 1 : 0;
  Rows expected = flat(0, 16, 6);
  expected[0][fromX] = isWhite;
  expected[toY][toX] = isWhite;
  EXPECT_EQ(dithered(method, levels), expected)
      << method << ": " << fromX << ",0 to " << toX << ',' << toY;
}

class CxImageBorders : public testing::TestWithParam<int> {};

TEST_P(CxImageBorders, DropTheSharesThatFallOutside) {
  for (const int level : {128, 129}) {
    for (std::size_t reach = 0; reach < 3; ++reach) {
      for (std::size_t y = 1; y < 5; ++y) expectNoShareAcross(GetParam(), level, 15, reach, y);
      for (std::size_t y = 0; y < 4; ++y) expectNoShareAcross(GetParam(), level, 0, 15 - reach, y);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Diffusions, CxImageBorders, testing::Values(2, 3, 4, 5, 6, 8));

// What a black pixel of level 128 sends to the first tap of its own column.
struct ColumnShare {
  int method;
  std::size_t dy;
  int share;
};

class CxImageColumn : public testing::TestWithParam<ColumnShare> {};

// In a column of single pixels nothing but the tap right below arrives: the others fall
// outside on both sides.
TEST_P(CxImageColumn, GetsTheSharesOfItsOwnColumnAlone) {
  const auto& [method, dy, share] = GetParam();
  for (const int above : {0, 1}) {
    Rows levels = flat(0, 1, dy + 1);
    levels[0][0] = 128;
    levels[dy][0] = static_cast<std::uint8_t>(128 - share + above);
    EXPECT_EQ(dithered(method, levels)[dy][0], above);
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, CxImageColumn,
                         testing::Values(ColumnShare{2, 1, 32}, ColumnShare{3, 1, 24},
                                         ColumnShare{4, 1, 18}, ColumnShare{5, 1, 20},
                                         ColumnShare{6, 2, 16}, ColumnShare{8, 1, 40}));

TEST(CxImageDither, TakesPagesOfOnePixelARowOrAColumn) {
  for (int method = 0; method <= 8; ++method) {
    EXPECT_EQ(dithered(method, {{255}}), (Rows{{1}})) << method;
    EXPECT_EQ(dithered(method, flat(255, 7, 1)), flat(1, 7, 1)) << method;
    EXPECT_EQ(dithered(method, flat(0, 1, 7)), flat(0, 1, 7)) << method;
  }
}

TEST(CxImageDither, ReadsFourBitsAsLevelsUpTo15) {
  for (int method = 0; method <= 8; ++method) {
    CxImage image;
    makeIndexed(image, 4, flat(15, 8, 4));
    ASSERT_TRUE(image.Dither(method));
    const Rows bayer = {{1, 0, 0, 0, 1, 0, 0, 0},
                        {0, 0, 0, 0, 0, 0, 0, 0},
                        {0, 0, 0, 0, 0, 0, 0, 0},
                        {0, 0, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(indexesOf(image), method == 7 ? bayer : flat(0, 8, 4)) << method;
  }
}

TEST(CxImageDither, Reads24BitsAsBlack) {
  const Bytes pixels(5 * 3 * 2, 255);
  for (int method = 0; method <= 8; ++method) {
    CxImage image;
    image.CreateFromArray(pixels.data(), 5, 2, 24, 15, false);
    ASSERT_TRUE(image.Dither(method));
    EXPECT_EQ(indexesOf(image), flat(0, 5, 2)) << method;
  }
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

TEST(CxImageDither, WithoutMemoryKeepsTheImageAndTellsWhy) {
  for (int method = 0; method <= 8; ++method) {
    const bool needsRows = method != 0 && method != 1 && method != 7;
    for (int granted = 1; granted <= (needsRows ? 2 : 1); ++granted) {
      grantedAllocations = granted;
      CxImage image(allocateUntilSpent);
      makeGrey(image, {{10, 200}, {130, 40}});
      EXPECT_FALSE(image.Dither(method)) << method;
      EXPECT_EQ(indexesOf(image), (Rows{{10, 200}, {130, 40}})) << method;
      EXPECT_STREQ(image.GetLastError(), "CxImage::Create can't allocate memory");
    }
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
    EXPECT_EQ(image.GetPaletteColor(static_cast<std::uint8_t>(i)), tagRGBQUAD{});
  }
}

}  // namespace
