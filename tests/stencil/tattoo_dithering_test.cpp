// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tattoo_dithering.h"

#include <gtest/gtest.h>

#include "stencil/error_diffusion.h"
#include "stencil/tone.h"
#include "stencil/unsharp.h"
#include "tests/stencil/grey_page.h"

namespace {

TEST(TattooDithering, LeavesTheSourceUnchanged) {
  QVImage page = noisePage(40, 30, 8);
  const Bytes before = bytesOf(page);
  const QVImage result = qvTattooDithering(page);
  EXPECT_EQ(bytesOf(page), before);
  EXPECT_EQ(result.width, 40);
  EXPECT_EQ(result.height, 30);
  EXPECT_EQ(result.colorType, QV_IMG_GRAY);
  for (const std::uint8_t level : bytesOf(result)) EXPECT_TRUE(level == 0 || level == 255);
}

TEST(TattooDithering, KeepsBlackAndWhitePages) {
  for (const std::uint8_t level : {std::uint8_t{0}, std::uint8_t{255}}) {
    QVImage page = uniformPage(25, 14, level);
    EXPECT_EQ(bytesOf(qvTattooDithering(page)), bytesOf(page)) << int{level};
  }
}

// The threshold belongs to the page before the tone curve.
TEST(TattooDithering, RunsTheStagesInOrder) {
  QVImage page = noisePage(40, 30, 8);
  QVImage grey = cvtGray(page);
  const int threshold = thresh_global_moments(grey);
  enh_piecewise_gamma(grey, 64, 0.85F, 0.7F);
  const QVImage expected = edf_cus(enh_unsharp_mask(grey, 300.0F, 11), threshold);
  EXPECT_EQ(bytesOf(qvTattooDithering(page)), bytesOf(expected));
}

TEST(TattooDithering, TakesColourPages) {
  const QVImage noise = noisePage(3 * 16, 12, 10);
  QVImage page(16, 12, QV_IMG_RGB, noise.data);
  QVImage grey = cvtGray(page);
  EXPECT_EQ(bytesOf(qvTattooDithering(page)), bytesOf(qvTattooDithering(grey)));
}

TEST(TattooDithering, AcceptsAnEmptyPage) {
  QVImage page(0, 0, QV_IMG_GRAY);
  EXPECT_EQ(qvTattooDithering(page).byteCount(), 0U);
}

}  // namespace
