// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "stencil/fast_math.h"
#include "stencil/tattoo_dithering.h"
#include "tests/stencil/grey_page.h"

namespace {

QVImage pixelOf(int layout, const Bytes& bytes) {
  return {1, 1, static_cast<QV_IMG_COLOR>(layout), bytes.data()};
}

Bytes greyOf(int layout, const Bytes& bytes) {
  return bytesOf(cvtGray(pixelOf(layout, bytes)));
}

struct Level {
  int level;
  int pixels;
};

GreyCounts countsOf(std::initializer_list<Level> levels) {
  GreyCounts counts{};
  for (const auto [level, pixels] : levels) counts[static_cast<std::size_t>(level)] += pixels;
  return counts;
}

// The discriminant of the two dark and light levels, step by step in single
// precision: what makes the pages below special.
float discriminantOf(const GreyCounts& counts) {
  int pixels = 0;
  for (const int count : counts) pixels += count;
  float m1 = 0.0F;
  float m2 = 0.0F;
  float m3 = 0.0F;
  for (int k = 0; k < 256; ++k) {
    const float share =
        static_cast<float>(counts[static_cast<std::size_t>(k)]) / static_cast<float>(pixels);
    m1 = m1 + static_cast<float>(k) * share;
    m2 = m2 + static_cast<float>(k * k) * share;
    m3 = m3 + static_cast<float>(k * k * k) * share;
  }
  const float cd = m2 - m1 * m1;
  const float c0 = (m1 * m3 - m2 * m2) / cd;
  const float c1 = (m1 * m2 - m3) / cd;
  return static_cast<float>(static_cast<double>(c1 * c1) - 4.0 * static_cast<double>(c0));
}

TEST(CvtGray, WeightsAreExactConstants) {
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kRedWeight), 0x3E991687U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kGreenWeight), 0x3F1645A2U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kBlueWeight), 0x3DE978D5U);
}

TEST(CvtGray, FollowsTheOrderOfTheColours) {
  EXPECT_EQ(greyOf(QV_IMG_RGBA, {255, 0, 0, 0}), Bytes{76});
  EXPECT_EQ(greyOf(QV_IMG_BGRA, {255, 0, 0, 0}), Bytes{29});
  EXPECT_EQ(greyOf(QV_IMG_RGB, {255, 0, 0}), Bytes{76});
  EXPECT_EQ(greyOf(QV_IMG_BGR, {255, 0, 0}), Bytes{29});
  EXPECT_EQ(greyOf(7, {255, 0, 0, 0}), Bytes{76});
  EXPECT_EQ(greyOf(-1, {255, 0, 0, 0}), Bytes{76});
}

TEST(CvtGray, WhiteStaysWhiteInEveryLayout) {
  for (int layout = 0; layout <= 4; ++layout) {
    EXPECT_EQ(greyOf(layout, Bytes(4, 255)), Bytes{255}) << "layout " << layout;
  }
}

TEST(CvtGray, IgnoresAlpha) {
  EXPECT_EQ(greyOf(QV_IMG_RGBA, {10, 20, 30, 0}), greyOf(QV_IMG_RGBA, {10, 20, 30, 255}));
}

TEST(CvtGray, CopiesGreyBytes) {
  const QVImage page = noisePage(31, 7, 1);
  const QVImage grey = cvtGray(page);
  EXPECT_EQ(bytesOf(grey), bytesOf(page));
  EXPECT_EQ(grey.colorType, QV_IMG_GRAY);
  EXPECT_EQ(grey.channels, 1);
}

TEST(CvtGray, TakesItsStepFromTheChannelsAndItsOrderFromTheLayout) {
  QVImage page(2, 1, QV_IMG_RGBA, Bytes{1, 2, 3, 4, 5, 6, 7, 8}.data());
  page.colorType = QV_IMG_GRAY;
  EXPECT_EQ(bytesOf(cvtGray(page)), (Bytes{1, 5}));
}

TEST(CvtGray, OfAnEmptyImageIsEmpty) {
  const QVImage grey = cvtGray(QVImage(0, 0, QV_IMG_RGB));
  EXPECT_EQ(grey.byteCount(), 0U);
}

TEST(ThreshGlobalMoments, HalfBlackHalfWhiteGivesWhite) {
  EXPECT_EQ(thresh_global_moments(greyPage(2, 2, {0, 255, 255, 0})), 255);
}

TEST(ThreshGlobalMoments, EqualsTheSeamThatTakesCounts) {
  const QVImage page = noisePage(64, 48, 5);
  EXPECT_EQ(thresh_global_moments(page), threshold_of_counts(count_levels(page)));
}

TEST(ThreshGlobalMoments, ReturnsTheFallbackForASingleLevel) {
  for (int level = 0; level < 256; ++level) {
    EXPECT_EQ(thresh_global_moments(uniformPage(9, 4, static_cast<std::uint8_t>(level))), 128);
  }
}

TEST(ThreshGlobalMoments, ReturnsTheFallbackForAnEmptyPage) {
  EXPECT_EQ(thresh_global_moments(QVImage(0, 0, QV_IMG_GRAY)), 128);
}

// No page has a negative one by arithmetic; rounding makes it so on nearly single levels.
TEST(ThreshGlobalMoments, ReturnsTheFallbackWhenTheDiscriminantIsNegative) {
  for (const GreyCounts& counts : {countsOf({{109, 998}, {108, 2}}), countsOf({{5, 38397}, {4, 3}}),
                                   countsOf({{227, 99}, {240, 1}})}) {
    EXPECT_LT(discriminantOf(counts), 0.0F);
    EXPECT_EQ(threshold_of_counts(counts), 128);
  }
}

TEST(ThreshGlobalMoments, ReturnsTheFallbackWhenTheDiscriminantIsInfinite) {
  const GreyCounts counts = countsOf({{172, 999}, {173, 1}});
  EXPECT_EQ(discriminantOf(counts), std::numeric_limits<float>::infinity());
  EXPECT_EQ(threshold_of_counts(counts), 128);
}

TEST(ThreshGlobalMoments, ReturnsTheFallbackWhenTheDiscriminantIsNotANumber) {
  const GreyCounts counts = countsOf({{139, 999}, {141, 1}});
  EXPECT_NE(discriminantOf(counts), discriminantOf(counts));
  EXPECT_EQ(threshold_of_counts(counts), 128);
}

TEST(ThreshGlobalMoments, MinusOneWhenNoLevelExceedsTheDarkShare) {
  EXPECT_EQ(threshold_of_counts(countsOf({{13, 38397}, {18, 3}})), -1);
}

TEST(PiecewiseGamma, ParametersAreExactConstants) {
  EXPECT_EQ(kStencilKnee, 64);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kStencilGammaLow), 0x3F59999AU);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kStencilGammaHigh), 0x3F333333U);
}

TEST(PiecewiseGamma, LiftsTheMidTones) {
  const GreyTable table = piecewise_gamma_table(kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  struct Row {
    std::size_t from;
    int to;
  };
  for (const Row row : {Row{0, 0}, Row{1, 1}, Row{2, 3}, Row{63, 63}, Row{64, 64}, Row{65, 68},
                        Row{128, 152}, Row{255, 255}}) {
    EXPECT_EQ(table[row.from], row.to) << "level " << row.from;
  }
}

TEST(PiecewiseGamma, ChangesAnImageInPlace) {
  QVImage page = greyPage(4, 2, {0, 1, 2, 63, 64, 65, 128, 255});
  const std::uint8_t* buffer = page.data;
  enh_piecewise_gamma(page, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  EXPECT_EQ(page.data, buffer);
  EXPECT_EQ(bytesOf(page), (Bytes{0, 1, 3, 63, 64, 68, 152, 255}));
}

TEST(PiecewiseGamma, LeavesBlackKneeAndWhiteUnchanged) {
  QVImage page = greyPage(3, 1, {0, 64, 255});
  enh_piecewise_gamma(page, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  EXPECT_EQ(bytesOf(page), (Bytes{0, 64, 255}));
}

}  // namespace
