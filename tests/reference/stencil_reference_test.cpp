// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The reference implementation of the stencil method against known numbers and examples computed by
// hand.

#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "tests/reference/stencil.h"

namespace {

using namespace reference;
using Bytes = std::vector<std::uint8_t>;

QVImage grey(int width, int height, const Bytes& levels) {
  return QVImage(width, height, QV_IMG_GRAY, levels.data());
}

Bytes bytesOf(const QVImage& image) {
  return Bytes(image.data, image.data + std::int64_t{image.width} * image.height * image.channels);
}

int thresholdOf(std::vector<std::pair<int, int>> countedLevels) {
  int counts[256] = {};
  int pixels = 0;
  for (const auto& [count, level] : countedLevels) {
    counts[level] += count;
    pixels += count;
  }
  return thresh_global_moments_from_counts(counts, pixels);
}

TEST(ReferenceStencil, LayoutGivesBytesPerPixel) {
  EXPECT_EQ(QVImage(1, 1, QV_IMG_GRAY).channels, 1);
  EXPECT_EQ(QVImage(1, 1, QV_IMG_BGR).channels, 3);
  EXPECT_EQ(QVImage(1, 1, QV_IMG_RGB).channels, 3);
  EXPECT_EQ(QVImage(1, 1, QV_IMG_BGRA).channels, 4);
  EXPECT_EQ(QVImage(1, 1, static_cast<QV_IMG_COLOR>(7)).channels, 4);
  EXPECT_EQ(QVImage(1, 1, static_cast<QV_IMG_COLOR>(-1)).channels, 4);
}

TEST(ReferenceStencil, BitPatternsOfTheConstants) {
  EXPECT_EQ(std::bit_cast<std::uint32_t>(1e-6F), 0x358637BDU);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.299F), 0x3E991687U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.587F), 0x3F1645A2U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.114F), 0x3DE978D5U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.85F), 0x3F59999AU);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.7F), 0x3F333333U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.505786F), 0x3F017B31U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(-0.052926F), 0xBD58C8EFU);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.226194F), 0x3E679F66U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.128835F), 0x3E03ED52U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.243191F), 0x3E790710U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(-0.111078F), 0xBDE37CDDU);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(0.1427F), 0x3E121FF3U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(6.2831854820251465F), 0x40C90FDBU);
}

TEST(ReferenceStencil, ApproximateMath) {
  EXPECT_EQ(my_sqrt(0.0F), 0.0F);
  EXPECT_EQ(my_sqrt(-4.0F), -1.0F);
  EXPECT_NEAR(double{my_sqrt(4.0F)}, 2.0, 2e-6);
  EXPECT_EQ(double{my_sqrt(6.2831854820251465F)}, 2.5066285133361816);
  EXPECT_EQ(my_exp(0.0F), 1.0F);
  EXPECT_EQ(my_exp(-1.0F), static_cast<float>(1.0 / double{my_exp(1.0F)}));
  EXPECT_EQ(my_ln(1.0F), 0.0F);
  EXPECT_EQ(my_ln(0.0F), -1.0F);
  EXPECT_EQ(my_ln(-2.0F), -1.0F);
  EXPECT_EQ(my_pow(0.0F, 0.0F), 1.0F);
  EXPECT_EQ(my_pow(0.0F, 0.7F), 0.0F);
  EXPECT_EQ(my_pow(0.0F, -1.0F), -1.0F);
  EXPECT_EQ(my_pow(-2.0F, 0.5F), -1.0F);
  EXPECT_EQ(my_pow(-2.0F, 2.0F), my_exp(-2.0F));
  EXPECT_EQ(my_pow(1.0F, 0.85F), 1.0F);
  EXPECT_EQ(my_round(2.5F), 3);
  EXPECT_EQ(my_round(-2.5F), -3);
  EXPECT_EQ(my_round(-0.4F), 0);
  EXPECT_EQ(my_round(0.49999997F), 1);
  EXPECT_EQ(myClamp(300, 0, 255), 255);
  EXPECT_EQ(myClamp(-7, 0, 255), 0);
  EXPECT_FALSE(isWithinBounds(5, 0, 5, 3));
  EXPECT_TRUE(isWithinBounds(4, 2, 5, 3));
}

TEST(ReferenceStencil, GreyOfEachLayout) {
  const Bytes pixel = {255, 0, 0, 0};
  EXPECT_EQ(cvtGray(QVImage(1, 1, QV_IMG_RGBA, pixel.data())).data[0], 76);
  EXPECT_EQ(cvtGray(QVImage(1, 1, QV_IMG_BGRA, pixel.data())).data[0], 29);
  const Bytes white(4, 255);
  for (int layout = 0; layout <= 4; ++layout)
    EXPECT_EQ(cvtGray(QVImage(1, 1, static_cast<QV_IMG_COLOR>(layout), white.data())).data[0], 255);
}

TEST(ReferenceStencil, Thresholds) {
  EXPECT_EQ(thresholdOf({{8, 0}, {8, 255}}), 255);
  EXPECT_EQ(thresholdOf({{16, 255}}), 128);
  EXPECT_EQ(thresholdOf({{16, 0}}), 128);
  EXPECT_EQ(thresholdOf({{999, 172}, {1, 173}}), 128);
  EXPECT_EQ(thresholdOf({{999, 139}, {1, 141}}), 128);
  EXPECT_EQ(thresholdOf({{38397, 13}, {3, 18}}), -1);
}

TEST(ReferenceStencil, GammaTable) {
  QVImage image = grey(8, 1, {0, 1, 2, 63, 64, 65, 128, 255});
  enh_piecewise_gamma(image, 64, 0.85F, 0.7F);
  EXPECT_EQ(bytesOf(image), (Bytes{0, 1, 3, 63, 64, 68, 152, 255}));
}

TEST(ReferenceStencil, KernelOfTheUnsharpMask) {
  const double expected[6] = {0.035483, 0.058501, 0.086310, 0.113945, 0.134610, 0.142300};
  double kernel[11];
  generateGaussianKernel1D(11, 3.0, kernel);
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(kernel[i], expected[i], 5e-7) << i;
    EXPECT_EQ(kernel[i], kernel[10 - i]) << i;
  }
}

TEST(ReferenceStencil, UniformPagesStayUniform) {
  const Bytes levels(13 * 7, 201);
  EXPECT_EQ(bytesOf(enh_gaussian_filter_fast(grey(13, 7, levels), 11, 3.0)), levels);
  EXPECT_EQ(bytesOf(enh_gaussian_filter(grey(13, 7, levels), 11, 3.0, 3.0)), levels);
  EXPECT_EQ(bytesOf(enh_unsharp_mask(grey(13, 7, levels), 300.0F, 11)), levels);
}

TEST(ReferenceStencil, SmallAndOddKernelSizes) {
  const Bytes levels = {10, 200, 30, 4, 50, 60};
  const QVImage image = grey(3, 2, levels);
  for (const int size : {1, 0, -3, 2, 4}) {
    EXPECT_EQ(bytesOf(enh_gaussian_filter_fast(image, size, 3.0)), levels) << size;
    EXPECT_EQ(bytesOf(enh_gaussian_filter(image, size, 3.0, 3.0)), levels) << size;
  }
  EXPECT_EQ(bytesOf(enh_unsharp_mask(image, 0.0F, 11)), levels);
}

TEST(ReferenceStencil, DiffusionOfFlatPages) {
  EXPECT_EQ(bytesOf(edf_cus(grey(5, 4, Bytes(20, 255)), 128)), Bytes(20, 255));
  EXPECT_EQ(bytesOf(edf_cus(grey(5, 4, Bytes(20, 0)), 0)), Bytes(20, 0));
  EXPECT_EQ(bytesOf(edf_cus(grey(1, 1, {128}), 128)), Bytes{0});
  EXPECT_EQ(bytesOf(edf_cus(grey(1, 1, {0}), -1)), Bytes{255});
}

// A row of 3. 100 is black; its error terms are 50.58 (x + 1) and -5.29 (x + 2).
// The second pixel: 90 + 50.58 = 140.58, white; its error is -114.42, the error term -57.87.
// The third pixel: 190 - 5.29 - 57.87 = 126.84, black; with 192 it is 128.84, white.
TEST(ReferenceStencil, DiffusionAlongARowByHand) {
  EXPECT_EQ(bytesOf(edf_cus(grey(3, 1, {100, 90, 190}), 128)), (Bytes{0, 255, 0}));
  EXPECT_EQ(bytesOf(edf_cus(grey(3, 1, {100, 90, 192}), 128)), (Bytes{0, 255, 255}));
}

// 3 x 3 pixels, 0 except the centre (200) and its right neighbour. The pixels before the centre
// have no error. The centre becomes white with two black neighbours: white counts 255 * (1 -
// 0.2854) = 182.223, the error is 17.777 and the error term of the right neighbour 8.99: 120
// becomes white, 119 does not.
TEST(ReferenceStencil, NeighbourCorrectionByHand) {
  EXPECT_EQ(bytesOf(edf_cus(grey(3, 3, {0, 0, 0, 0, 200, 120, 0, 0, 0}), 128)),
            (Bytes{0, 0, 0, 0, 255, 255, 0, 0, 0}));
  EXPECT_EQ(bytesOf(edf_cus(grey(3, 3, {0, 0, 0, 0, 200, 119, 0, 0, 0}), 128)),
            (Bytes{0, 0, 0, 0, 255, 0, 0, 0, 0}));
}

}  // namespace
