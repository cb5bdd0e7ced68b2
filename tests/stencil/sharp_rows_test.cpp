// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharp_rows.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"
#include "tests/support/vector_levels.h"

namespace wren::stencil {
namespace {

Bytes streamed(const QVImage& page) {
  SharpRows rows(page.data, page.width, page.width, page.height, stencilToneCurve());
  Bytes row(static_cast<std::size_t>(page.width + 15));
  Bytes out;
  for (int y = 0; y < page.height; ++y) {
    rows.next(row.data());
    out.insert(out.end(), row.begin(), row.begin() + page.width);
  }
  return out;
}

Bytes referenceRows(const QVImage& page) {
  reference::QVImage copy = toReference(page);
  reference::enh_piecewise_gamma(copy, 64, 0.85F, 0.7F);
  return bytesOf(reference::enh_unsharp_mask(copy, 300.0F, 11));
}

class SharpRowsTest : public wren_test::VectorLevelTest {};
INSTANTIATE_TEST_SUITE_P(Level, SharpRowsTest, testing::ValuesIn(wren::machineVectorLevels()),
                         wren_test::vectorLevelTestName);

TEST_P(SharpRowsTest, EqualTheReferenceOnEverySize) {
  onEveryPage(1, [](const QVImage& page, PageMaker&) {
    EXPECT_TRUE(sameBytes(referenceRows(page), streamed(page), page.width));
  });
}

// Boxes of one level that begin and end anywhere: uniform areas start and stop at every
// place of a chunk, and one level follows another.
TEST_P(SharpRowsTest, EqualTheReferenceAroundBoxesOfOneLevel) {
  PageMaker maker(2);
  for (int i = 0; i < 300; ++i) {
    const int width = 60 + maker.below(90);
    const int height = 20 + maker.below(50);
    QVImage page = uniformPage(width, height, static_cast<std::uint8_t>(maker.below(3) * 127));
    for (int box = 0; box < 4; ++box) {
      const int left = maker.below(width);
      const int top = maker.below(height);
      const int right = std::min(width, left + 1 + maker.below(60));
      const int bottom = std::min(height, top + 1 + maker.below(30));
      const auto level = static_cast<std::uint8_t>(maker.below(256));
      for (int y = top; y < bottom; ++y) {
        std::fill(page.data + y * width + left, page.data + y * width + right, level);
      }
    }
    ASSERT_TRUE(sameBytes(referenceRows(page), streamed(page), width))
        << "page " << i << ", " << width << " x " << height;
  }
}

}  // namespace
}  // namespace wren::stencil
