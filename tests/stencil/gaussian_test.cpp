// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian.h"

#include <gtest/gtest.h>

#include "stencil/gaussian_kernel.h"
#include "stencil/recipe.h"
#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"

namespace wren::stencil {
namespace {

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
  const double kernel[] = {0.25, 0.5, 0.25};
  const QVImage result = convolve1D(page, kernel, 3, false);
  EXPECT_EQ(result.width, 5);
  EXPECT_EQ(result.height, 4);
  EXPECT_EQ(result.colorType, QV_IMG_BGRA);
}

TEST(Convolve1D, EqualsTheReferenceOnEverySize) {
  double kernel[kUnsharpSize];
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel);
  onEveryPage(0, [&](const QVImage& page, PageMaker& maker) {
    const bool horizontal = maker.below(2) == 0;
    EXPECT_TRUE(sameBytes(
        bytesOf(reference::convolve1D(toReference(page), kernel, kUnsharpSize, horizontal)),
        bytesOf(convolve1D(page, kernel, kUnsharpSize, horizontal)), page.width))
        << (horizontal ? "rows" : "columns");
  });
}

TEST(GaussianFilterFast, EqualsTheReferenceOnEverySize) {
  onEveryPage(0, [](const QVImage& page, PageMaker& maker) {
    const int size = 1 + 2 * maker.below(8);
    const double sigma = 0.5 + 0.25 * maker.below(20);
    EXPECT_TRUE(
        sameBytes(bytesOf(reference::enh_gaussian_filter_fast(toReference(page), size, sigma)),
                  bytesOf(enh_gaussian_filter_fast(page, size, sigma)), page.width))
        << size << " taps, sigma " << sigma;
  });
}

// The reference is slow here, so one size in 35 has to do.
TEST(GaussianFilter, EqualsTheReference) {
  onEveryPage(0, [](const QVImage& page, PageMaker& maker) {
    if (page.width % 7 != 0 || page.height % 5 != 0) return;
    const int size = 1 + 2 * maker.below(4);
    EXPECT_TRUE(
        sameBytes(bytesOf(reference::enh_gaussian_filter(toReference(page), size, 2.0, 1.25)),
                  bytesOf(enh_gaussian_filter(page, size, 2.0, 1.25)), page.width))
        << size << " taps";
  });
}

TEST(GaussianFilter, ResultIsGrey) {
  QVImage page = noisePage(5, 4, 9);
  page.colorType = QV_IMG_BGRA;
  EXPECT_EQ(enh_gaussian_filter(page, 3, 1.0, 1.0).colorType, QV_IMG_GRAY);
}

TEST(GaussianFilters, ReturnACopyForAnEvenOrNonPositiveSize) {
  const QVImage page = noisePage(17, 9, 3);
  const double kernel[] = {0.25, 0.25, 0.25, 0.25};
  for (const int size : {-3, -2, 0, 2, 4}) {
    SCOPED_TRACE(testing::Message() << "size " << size);
    EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(convolve1D(page, kernel, size, true)), 17));
    EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(convolve1D(page, kernel, size, false)), 17));
    EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(enh_gaussian_filter_fast(page, size, 3.0)), 17));
    EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(enh_gaussian_filter(page, size, 3.0, 3.0)), 17));
  }
}

TEST(GaussianFilters, AcceptAnEmptyImage) {
  EXPECT_EQ(enh_gaussian_filter_fast(QVImage(0, 0, QV_IMG_GRAY), 11, 3.0).byteCount(), 0U);
  EXPECT_EQ(enh_gaussian_filter(QVImage(0, 5, QV_IMG_GRAY), 11, 3.0, 3.0).byteCount(), 0U);
}

}  // namespace
}  // namespace wren::stencil
