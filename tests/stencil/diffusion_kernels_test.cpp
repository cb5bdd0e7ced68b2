// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The wavefront and its plain twin: the same blocks, the same bytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "stencil/diffusion_plain.h"
#include "stencil/diffusion_wavefront.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/test_pages.h"

namespace {

template <typename Diffuser>
Bytes diffused(const QVImage& page, int threshold) {
  Bytes out(page.byteCount());
  Diffuser diffuser(page.width, page.height, threshold);
  for (int y = 0; y < page.height; y += Diffuser::kBlockRows) {
    const int rows = std::min(Diffuser::kBlockRows, page.height - y);
    for (int r = 0; r < rows; ++r) {
      std::memcpy(diffuser.row(r), page.data + (y + r) * page.width,
                  static_cast<std::size_t>(page.width));
    }
    diffuser.run(out.data() + y * page.width, page.width, rows);
  }
  return out;
}

Bytes literal(const QVImage& page, int threshold) {
  const reference::QVImage source(page.width, page.height, reference::QV_IMG_GRAY, page.data);
  const reference::QVImage result = reference::edf_cus(source, threshold);
  return {result.data, result.data + page.byteCount()};
}

TEST(DiffusionKernels, BothEqualTheLiteralVersionOnEverySize) {
  PageMaker maker(5);
  for (const PageKind kind : kPageKinds) {
    for (int width = 1; width <= 70; ++width) {
      for (int height = 1; height <= 40; ++height) {
        const QVImage page = maker.make(kind, width, height);
        const int threshold = static_cast<int>(maker.next(257)) - 1;
        const Bytes expected = literal(page, threshold);
        ASSERT_EQ(diffused<stencil::WavefrontDiffuser>(page, threshold), expected)
            << width << " x " << height << " at " << threshold;
        ASSERT_EQ(diffused<stencil::PlainDiffuser>(page, threshold), expected)
            << width << " x " << height << " at " << threshold;
      }
    }
  }
}

// Wide enough that most columns are away from the edges, at every threshold.
TEST(DiffusionKernels, BothEqualTheLiteralVersionAtEveryThreshold) {
  PageMaker maker(6);
  for (int threshold = -1; threshold <= 255; ++threshold) {
    const PageKind kind = kPageKinds[maker.next(std::size(kPageKinds))];
    const QVImage page = maker.make(kind, 150 + threshold % 16, 50);
    const Bytes expected = literal(page, threshold);
    ASSERT_EQ(diffused<stencil::WavefrontDiffuser>(page, threshold), expected) << threshold;
    ASSERT_EQ(diffused<stencil::PlainDiffuser>(page, threshold), expected) << threshold;
  }
}

// Below the last ink the errors fade for hundreds of rows, through the denormals.
TEST(DiffusionKernels, ErrorsFadeAlikeOnALongBlankPage) {
  PageMaker maker(7);
  QVImage page = uniformPage(80, 1600, 0);
  for (int i = 0; i < 80 * 40; ++i) page.data[i] = static_cast<std::uint8_t>(maker.next(256));
  for (const int threshold : {0, 1, 128}) {
    const Bytes expected = literal(page, threshold);
    EXPECT_EQ(diffused<stencil::WavefrontDiffuser>(page, threshold), expected) << threshold;
    EXPECT_EQ(diffused<stencil::PlainDiffuser>(page, threshold), expected) << threshold;
  }
}

TEST(DiffusionKernels, LeaveBytesBesideTheRowsAlone) {
  PageMaker maker(8);
  const QVImage page = maker.make(PageKind::kNoise, 21, 3);
  Bytes out(3 * 32, 9);
  stencil::WavefrontDiffuser diffuser(21, 3, 128);
  for (int r = 0; r < 3; ++r) std::memcpy(diffuser.row(r), page.data + r * 21, 21);
  diffuser.run(out.data(), 32, 3);
  for (std::size_t i = 0; i < out.size(); ++i) EXPECT_EQ(out[i] == 9, i % 32 >= 21) << i;
}

}  // namespace
