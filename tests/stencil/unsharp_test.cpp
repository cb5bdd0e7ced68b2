// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/unsharp.h"

#include <gtest/gtest.h>

#include <bit>

#include "stencil/tattoo_dithering.h"
#include "tests/stencil/grey_page.h"

namespace {

TEST(UnsharpMask, ParametersAreExactConstants) {
  EXPECT_EQ(std::bit_cast<std::uint32_t>(kStencilUnsharpAmount), 0x43960000U);
  EXPECT_EQ(kStencilUnsharpSize, 11);
  EXPECT_EQ(kUnsharpSigma, 3.0);
  EXPECT_EQ(kUnsharpDivisor, 100.0F);
}

TEST(AddWeighted, IsFourTimesTheImageMinusThreeTimesTheBlur) {
  const QVImage image = greyPage(4, 1, {10, 100, 200, 0});
  const QVImage blurred = greyPage(4, 1, {12, 90, 150, 30});
  EXPECT_EQ(bytesOf(add_Weighted(image, blurred, 3.0F)), (Bytes{4, 130, 255, 0}));
}

TEST(AddWeighted, KeepsAUniformImage) {
  for (int level = 0; level < 256; ++level) {
    const QVImage page = uniformPage(3, 3, static_cast<std::uint8_t>(level));
    EXPECT_EQ(bytesOf(add_Weighted(page, page, 3.0F)), bytesOf(page)) << level;
  }
}

TEST(UnsharpMask, KeepsAUniformImage) {
  const QVImage page = uniformPage(20, 15, 77);
  EXPECT_EQ(bytesOf(enh_unsharp_mask(page, 300.0F, 11)), bytesOf(page));
}

TEST(UnsharpMask, SinglePixelStaysWhiteOnBlack) {
  QVImage page = uniformPage(21, 21, 0);
  page.data[10 * 21 + 10] = 255;
  EXPECT_EQ(bytesOf(enh_unsharp_mask(page, 300.0F, 11)), bytesOf(page));
}

TEST(UnsharpMask, OfNothingIsACopy) {
  const QVImage page = noisePage(19, 8, 2);
  EXPECT_EQ(bytesOf(enh_unsharp_mask(page, 0.0F, 11)), bytesOf(page));
}

TEST(UnsharpMask, OfAnEvenSizeIsACopy) {
  const QVImage page = noisePage(19, 8, 2);
  EXPECT_EQ(bytesOf(enh_unsharp_mask(page, 300.0F, 10)), bytesOf(page));
}

TEST(UnsharpMask, LeavesItsInputUnchanged) {
  const QVImage page = noisePage(19, 8, 2);
  const Bytes before = bytesOf(page);
  EXPECT_NE(bytesOf(enh_unsharp_mask(page, 300.0F, 11)), before);
  EXPECT_EQ(bytesOf(page), before);
}

}  // namespace
