// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>

#include "stencil/unsharp.h"
#include "tests/stencil/grey_page.h"

namespace {

constexpr int kSize = 11;

std::array<double, kSize> stencilKernel() {
  std::array<double, kSize> kernel{};
  generateGaussianKernel1D(kSize, kUnsharpSigma, kernel.data());
  return kernel;
}

TEST(GaussianKernel1D, UsesTwoPiInSinglePrecision) {
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kTwoPiSingle), 0x40C90FDBU);
  EXPECT_EQ(static_cast<double>(kTwoPiSingle), 6.2831854820251465);
  EXPECT_EQ(kTwoPi, 6.283185307179586);
}

TEST(GaussianKernel1D, HasTheStencilWeights) {
  const auto kernel = stencilKernel();
  const double expected[] = {0.035483, 0.058501, 0.086310, 0.113945, 0.134610, 0.142300};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(kernel[i], expected[i], 0.5e-6) << i;
}

TEST(GaussianKernel1D, IsSymmetricToTheBit) {
  const auto kernel = stencilKernel();
  for (std::size_t i = 0; i < kernel.size(); ++i) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(kernel[i]),
              std::bit_cast<std::uint64_t>(kernel[kernel.size() - 1 - i]));
  }
}

TEST(GaussianKernel1D, OfSizeOneIsExactlyOne) {
  double kernel = 0.0;
  generateGaussianKernel1D(1, 3.0, &kernel);
  EXPECT_EQ(kernel, 1.0);
}

TEST(GaussianKernels, LeaveAnEvenOrNonPositiveSizeUntouched) {
  for (const int size : {-3, -2, 0, 2, 4}) {
    std::array<double, 25> kernel{};
    kernel.fill(7.0);
    generateGaussianKernel1D(size, 3.0, kernel.data());
    generateGaussianKernel(size, 3.0, 3.0, kernel.data());
    for (const double entry : kernel) EXPECT_EQ(entry, 7.0) << "size " << size;
  }
}

TEST(GaussianKernel, AddsUpToOneInTwoDimensions) {
  std::array<double, 35 * 35> kernel{};
  generateGaussianKernel(5, 1.0, 2.0, kernel.data());
  double sum = 0.0;
  for (std::size_t i = 0; i < 25; ++i) sum += kernel[i];
  EXPECT_NEAR(sum, 1.0, 1e-15);
  EXPECT_EQ(kernel[25], 0.0);
  // Wider in y than in x: the pixel above weighs more than the one to the left.
  EXPECT_GT(kernel[7], kernel[11]);
}

TEST(GaussianFilters, KeepAUniformImage) {
  for (int level = 0; level < 256; ++level) {
    const QVImage page = uniformPage(13, 12, static_cast<std::uint8_t>(level));
    EXPECT_EQ(bytesOf(enh_gaussian_filter_fast(page, kSize, 3.0)), bytesOf(page)) << level;
    EXPECT_EQ(bytesOf(enh_gaussian_filter(page, 5, 3.0, 3.0)), bytesOf(page)) << level;
  }
}

TEST(GaussianFilters, ReturnTheInputForSizeOne) {
  const QVImage page = noisePage(17, 9, 3);
  EXPECT_EQ(bytesOf(enh_gaussian_filter_fast(page, 1, 3.0)), bytesOf(page));
  EXPECT_EQ(bytesOf(enh_gaussian_filter(page, 1, 3.0, 3.0)), bytesOf(page));
}

TEST(GaussianFilters, ReturnACopyForAnEvenOrNonPositiveSize) {
  const QVImage page = noisePage(17, 9, 3);
  const double kernel[] = {0.25, 0.25, 0.25, 0.25};
  for (const int size : {-3, -2, 0, 2, 4}) {
    EXPECT_EQ(bytesOf(convolve1D(page, kernel, size, true)), bytesOf(page)) << size;
    EXPECT_EQ(bytesOf(convolve1D(page, kernel, size, false)), bytesOf(page)) << size;
    EXPECT_EQ(bytesOf(enh_gaussian_filter_fast(page, size, 3.0)), bytesOf(page)) << size;
    EXPECT_EQ(bytesOf(enh_gaussian_filter(page, size, 3.0, 3.0)), bytesOf(page)) << size;
  }
}

TEST(Convolve1D, OnePixelWideImageIsKeptByTheRowPass) {
  const QVImage page = noisePage(1, 40, 4);
  const auto kernel = stencilKernel();
  EXPECT_EQ(bytesOf(convolve1D(page, kernel.data(), kSize, true)), bytesOf(page));
}

TEST(Convolve1D, RepeatsTheEdgePixels) {
  const double kernel[] = {0.5, 0.0, 0.5};
  const QVImage row = greyPage(4, 1, {10, 20, 30, 40});
  EXPECT_EQ(bytesOf(convolve1D(row, kernel, 3, true)), (Bytes{15, 20, 30, 35}));
  const QVImage column = greyPage(1, 4, {10, 20, 30, 40});
  EXPECT_EQ(bytesOf(convolve1D(column, kernel, 3, false)), (Bytes{15, 20, 30, 35}));
}

TEST(Convolve1D, StoresTheLowByteWithoutClamping) {
  const double kernel[] = {2.0};
  const QVImage row = greyPage(3, 1, {100, 128, 200});
  EXPECT_EQ(bytesOf(convolve1D(row, kernel, 1, true)), (Bytes{200, 0, 144}));
}

TEST(Convolve1D, KeepsSizeAndLayout) {
  QVImage page = noisePage(5, 4, 9);
  page.colorType = QV_IMG_BGRA;
  const auto kernel = stencilKernel();
  const QVImage result = convolve1D(page, kernel.data(), kSize, false);
  EXPECT_EQ(result.width, 5);
  EXPECT_EQ(result.height, 4);
  EXPECT_EQ(result.colorType, QV_IMG_BGRA);
}

TEST(GaussianFilters, AcceptAnEmptyImage) {
  EXPECT_EQ(enh_gaussian_filter_fast(QVImage(0, 0, QV_IMG_GRAY), kSize, 3.0).byteCount(), 0U);
  EXPECT_EQ(enh_gaussian_filter(QVImage(0, 5, QV_IMG_GRAY), kSize, 3.0, 3.0).byteCount(), 0U);
}

TEST(GaussianFilter, ResultIsGrey) {
  QVImage page = noisePage(5, 4, 9);
  page.colorType = QV_IMG_BGRA;
  EXPECT_EQ(enh_gaussian_filter(page, 3, 1.0, 1.0).colorType, QV_IMG_GRAY);
}

}  // namespace
