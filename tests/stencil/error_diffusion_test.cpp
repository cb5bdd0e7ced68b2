// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/error_diffusion.h"

#include <gtest/gtest.h>

#include <bit>

#include "tests/stencil/grey_page.h"

namespace {

TEST(ErrorDiffusion, WeightsAreExactConstants) {
  struct Row {
    int dx;
    int dy;
    std::uint32_t bits;
  };
  constexpr Row kRows[] = {{1, 0, 0x3F017B31U},  {2, 0, 0xBD58C8EFU}, {-2, 1, 0x3E679F66U},
                           {-1, 1, 0x3E03ED52U}, {0, 1, 0x3E790710U}, {1, 1, 0xBDE37CDDU}};
  ASSERT_EQ(std::size(kDiffusionTaps), std::size(kRows));
  for (std::size_t k = 0; k < std::size(kRows); ++k) {
    EXPECT_EQ(kDiffusionTaps[k].dx, kRows[k].dx) << k;
    EXPECT_EQ(kDiffusionTaps[k].dy, kRows[k].dy) << k;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(kDiffusionTaps[k].weight), kRows[k].bits) << k;
  }
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kNeighbourStep), 0x3E121FF3U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kWhite), 0x437F0000U);
}

TEST(ErrorDiffusion, WeightsDropSixPercent) {
  float sum = 0.0F;
  for (const StencilTap& tap : kDiffusionTaps) sum += tap.weight;
  EXPECT_NEAR(sum, 0.940002F, 1e-6F);
}

TEST(ErrorDiffusion, KeepsWhite) {
  const QVImage page = uniformPage(17, 9, 255);
  EXPECT_EQ(bytesOf(edf_cus(page, 128)), bytesOf(page));
}

TEST(ErrorDiffusion, KeepsBlack) {
  const QVImage page = uniformPage(17, 9, 0);
  for (const int threshold : {0, 1, 128, 255}) {
    EXPECT_EQ(bytesOf(edf_cus(page, threshold)), bytesOf(page)) << threshold;
  }
}

TEST(ErrorDiffusion, LevelEqualToTheThresholdIsBlack) {
  EXPECT_EQ(bytesOf(edf_cus(greyPage(1, 1, {128}), 128)), Bytes{0});
  EXPECT_EQ(bytesOf(edf_cus(greyPage(1, 1, {129}), 128)), Bytes{255});
}

// The second pixel of {0, 0} has gathered -255 x 0.505786 = -129, that of {0, 128} is
// just above -1.
TEST(ErrorDiffusion, ThresholdOfMinusOneIsUsedAsItIs) {
  EXPECT_EQ(bytesOf(edf_cus(greyPage(1, 1, {0}), -1)), Bytes{255});
  EXPECT_EQ(bytesOf(edf_cus(greyPage(2, 1, {0, 0}), -1)), (Bytes{255, 0}));
  EXPECT_EQ(bytesOf(edf_cus(greyPage(2, 1, {0, 128}), -1)), (Bytes{255, 255}));
  EXPECT_EQ(bytesOf(edf_cus(greyPage(2, 1, {0, 127}), -1)), (Bytes{255, 0}));
}

// The second pixel gets 100 x 0.505786; the third its error x 0.505786 and 100 x -0.052926.
TEST(ErrorDiffusion, RowOfOnePixelSpreadsOnlyToTheRight) {
  EXPECT_EQ(bytesOf(edf_cus(greyPage(3, 1, {100, 90, 30}), 128)), (Bytes{0, 255, 0}));
  EXPECT_EQ(bytesOf(edf_cus(greyPage(3, 1, {100, 70, 77}), 128)), (Bytes{0, 0, 255}));
}

// 100 x 0.243191 = 24.3 reaches the pixel below and nothing else.
TEST(ErrorDiffusion, ColumnOfOnePixelSpreadsOnlyDownwards) {
  EXPECT_EQ(bytesOf(edf_cus(greyPage(1, 2, {100, 103}), 128)), (Bytes{0, 0}));
  EXPECT_EQ(bytesOf(edf_cus(greyPage(1, 2, {100, 104}), 128)), (Bytes{0, 255}));
}

// Black above and to the left; the centre is white and counts as 182.22 only, so
// 200 - 182.22 = 17.78 x 0.505786 = 8.99 lifts the pixel to its right above 128.
TEST(ErrorDiffusion, CentreOfThreeByThreeIsCorrectedForBlackNeighbours) {
  const QVImage page = greyPage(3, 3, {0, 0, 0, 0, 200, 120, 0, 0, 0});
  EXPECT_EQ(pixelAt(edf_cus(page, 128), 1, 1), 255);
  EXPECT_EQ(pixelAt(edf_cus(page, 128), 2, 1), 255);
}

// The same pixels in two rows: all of them are border, white counts in full, and
// 200 - 255 = -55 keeps the pixel to the right black.
TEST(ErrorDiffusion, BorderPixelIsNotCorrected) {
  const QVImage page = greyPage(3, 2, {0, 0, 0, 0, 200, 120});
  EXPECT_EQ(pixelAt(edf_cus(page, 128), 1, 1), 255);
  EXPECT_EQ(pixelAt(edf_cus(page, 128), 2, 1), 0);
}

TEST(ErrorDiffusion, ResultHoldsOnlyBlackAndWhite) {
  const QVImage page = noisePage(65, 33, 6);
  const QVImage result = edf_cus(page, 128);
  EXPECT_EQ(result.width, 65);
  EXPECT_EQ(result.height, 33);
  EXPECT_EQ(result.colorType, QV_IMG_GRAY);
  for (const std::uint8_t level : bytesOf(result)) EXPECT_TRUE(level == 0 || level == 255);
}

TEST(ErrorDiffusion, AcceptsAnEmptyImage) {
  EXPECT_EQ(edf_cus(QVImage(0, 4, QV_IMG_GRAY), 128).byteCount(), 0U);
  EXPECT_EQ(edf_cus(QVImage(4, 0, QV_IMG_GRAY), 128).byteCount(), 0U);
}

}  // namespace
