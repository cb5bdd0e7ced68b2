// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/unsharp.h"

#include <gtest/gtest.h>

#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"

namespace wren::stencil {
namespace {

TEST(AddWeighted, IsFourTimesTheImageMinusThreeTimesTheBlur) {
  const QVImage image = greyPage(4, 1, {10, 100, 200, 0});
  const QVImage blurred = greyPage(4, 1, {12, 90, 150, 30});
  EXPECT_EQ(bytesOf(add_Weighted(image, blurred, 3.0F)), (Bytes{4, 130, 255, 0}));
}

TEST(UnsharpMask, KeepsASingleWhitePixelOnBlack) {
  QVImage page = uniformPage(21, 21, 0);
  page.data[10 * 21 + 10] = 255;
  EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(enh_unsharp_mask(page, 300.0F, 11)), 21));
}

TEST(UnsharpMask, IsACopyWithoutAnAmountOrAKernel) {
  struct Row {
    float amount;
    int size;
  };
  const QVImage page = noisePage(19, 8, 2);
  for (const Row row : {Row{0.0F, 11}, Row{300.0F, 10}, Row{300.0F, -11}}) {
    EXPECT_TRUE(sameBytes(bytesOf(page), bytesOf(enh_unsharp_mask(page, row.amount, row.size)), 19))
        << row.amount << " percent, size " << row.size;
  }
}

TEST(UnsharpMask, EqualsTheReferenceOnEverySize) {
  onEveryPage(0, [](const QVImage& page, PageMaker& maker) {
    const bool stencil = maker.below(2) == 0;
    const float amount = stencil ? 300.0F : static_cast<float>(maker.below(2000)) / 3.0F - 200.0F;
    const int size = stencil ? 11 : 7;
    EXPECT_TRUE(sameBytes(bytesOf(reference::enh_unsharp_mask(toReference(page), amount, size)),
                          bytesOf(enh_unsharp_mask(page, amount, size)), page.width))
        << amount << " percent, size " << size;
  });
}

}  // namespace
}  // namespace wren::stencil
