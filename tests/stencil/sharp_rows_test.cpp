// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stream of sharpened rows against the stages that it stands for: its plain
// twin in the product and the literal version.

#include "stencil/sharp_rows.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "stencil/tattoo_dithering.h"
#include "stencil/unsharp.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/test_pages.h"

namespace {

Bytes streamed(const QVImage& page) {
  stencil::SharpRows rows(page.data, page.width, page.width, page.height, stencil_tone_table());
  Bytes row(static_cast<std::size_t>(page.width + 15));
  Bytes out;
  for (int y = 0; y < page.height; ++y) {
    rows.next(row.data());
    out.insert(out.end(), row.begin(), row.begin() + page.width);
  }
  return out;
}

Bytes plain(QVImage page) {
  enh_piecewise_gamma(page, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  return bytesOf(enh_unsharp_mask(page, kStencilUnsharpAmount, kStencilUnsharpSize));
}

Bytes literal(const QVImage& page) {
  reference::QVImage copy(page.width, page.height, reference::QV_IMG_GRAY, page.data);
  reference::enh_piecewise_gamma(copy, 64, 0.85F, 0.7F);
  const reference::QVImage sharp = reference::enh_unsharp_mask(copy, 300.0F, 11);
  return {sharp.data, sharp.data + page.byteCount()};
}

TEST(SharpRows, EqualTheStagesOnEverySize) {
  PageMaker maker(1);
  for (const PageKind kind : kPageKinds) {
    for (int width = 1; width <= 70; ++width) {
      for (int height = 1; height <= 40; height += 1 + height / 8) {
        const QVImage page = maker.make(kind, width, height);
        const Bytes expected = literal(page);
        ASSERT_EQ(streamed(page), expected) << width << " x " << height;
        ASSERT_EQ(plain(page), expected) << width << " x " << height;
      }
    }
  }
}

// Boxes of single levels that begin and end anywhere: stretches that are alike start
// and stop at every place of a chunk, and one level follows another.
TEST(SharpRows, EqualTheStagesAroundBoxesOfOneLevel) {
  PageMaker maker(2);
  for (int i = 0; i < 300; ++i) {
    const int width = 60 + static_cast<int>(maker.next(90));
    const int height = 20 + static_cast<int>(maker.next(50));
    QVImage page = uniformPage(width, height, static_cast<std::uint8_t>(maker.next(3) * 127));
    for (int box = 0; box < 4; ++box) {
      const int left = static_cast<int>(maker.next(static_cast<unsigned>(width)));
      const int top = static_cast<int>(maker.next(static_cast<unsigned>(height)));
      const int right = std::min(width, left + 1 + static_cast<int>(maker.next(60)));
      const int bottom = std::min(height, top + 1 + static_cast<int>(maker.next(30)));
      const auto level = static_cast<std::uint8_t>(maker.next(256));
      for (int y = top; y < bottom; ++y) {
        std::fill(page.data + y * width + left, page.data + y * width + right, level);
      }
    }
    ASSERT_EQ(streamed(page), literal(page)) << i << ": " << width << " x " << height;
  }
}

}  // namespace
