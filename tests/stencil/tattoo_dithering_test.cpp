// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// stencil_page_test compares all kinds of grey pages with the reference implementation.

#include "stencil/tattoo_dithering.h"

#include <gtest/gtest.h>

#include "tests/stencil/reference_image.h"

namespace wren::stencil {
namespace {

TEST(TattooDithering, EqualsTheReferenceInEveryLayout) {
  for (int layout = -1; layout <= 5; ++layout) {
    for (int size = 1; size <= 40; ++size) {
      const QVImage noise = noisePage(4 * size, size, static_cast<unsigned>(size));
      QVImage page(size, size, static_cast<QV_IMG_COLOR>(layout), noise.data);
      const Bytes before = bytesOf(page);
      const QVImage dots = qvTattooDithering(page);
      ASSERT_TRUE(sameBytes(referenceDots(page), bytesOf(dots), static_cast<std::size_t>(size)))
          << "layout " << layout;
      ASSERT_EQ(dots.width, size);
      ASSERT_EQ(dots.height, size);
      ASSERT_EQ(dots.channels, 1);
      ASSERT_EQ(dots.colorType, QV_IMG_GRAY);
      ASSERT_TRUE(sameBytes(before, bytesOf(page), static_cast<std::size_t>(size * page.channels)))
          << "the source changed";
    }
  }
}

// `channels` and `colorType` are independent fields.
TEST(TattooDithering, TakesGreyPagesOfFourBytesPerPixel) {
  const QVImage noise = noisePage(4 * 20, 20, 3);
  QVImage page(20, 20, QV_IMG_RGBA, noise.data);
  page.colorType = QV_IMG_GRAY;
  QVImage grey(20, 20, QV_IMG_GRAY);
  for (int i = 0; i < 20 * 20; ++i) grey.data[i] = noise.data[std::ptrdiff_t{4} * i];
  EXPECT_TRUE(sameBytes(referenceDots(grey), bytesOf(qvTattooDithering(page)),
                        static_cast<std::size_t>(20)));
}

TEST(TattooDithering, AcceptsAnEmptyPage) {
  for (const QV_IMG_COLOR layout : {QV_IMG_GRAY, QV_IMG_RGB}) {
    QVImage page(0, 0, layout);
    EXPECT_EQ(qvTattooDithering(page).byteCount(), 0U) << "layout " << layout;
  }
}

}  // namespace
}  // namespace wren::stencil
