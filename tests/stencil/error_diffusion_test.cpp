// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Examples worked out by hand. diffusion_wavefront_test compares all kinds of pages with
// the reference implementation.

#include "stencil/error_diffusion.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/stencil/reference_image.h"

namespace wren::stencil {
namespace {

struct Example {
  int width;
  int height;
  int threshold;
  Bytes levels;
  Bytes dots;
};

void expectDots(const std::vector<Example>& examples) {
  for (const auto& [width, height, threshold, levels, dots] : examples) {
    EXPECT_EQ(bytesOf(edf_cus(greyPage(width, height, levels), threshold)), dots)
        << testing::PrintToString(levels) << " at " << threshold;
  }
}

TEST(ErrorDiffusion, LevelEqualToTheThresholdIsBlack) {
  expectDots({{1, 1, 128, {128}, {0}}, {1, 1, 128, {129}, {255}}});
}

// The error of the first pixel is -255 x 0.505786 = -129 in the second.
TEST(ErrorDiffusion, ThresholdOfMinusOneIsUsedAsItIs) {
  expectDots({{1, 1, -1, {0}, {255}},
              {2, 1, -1, {0, 0}, {255, 0}},
              {2, 1, -1, {0, 127}, {255, 0}},
              {2, 1, -1, {0, 128}, {255, 255}}});
}

// The second pixel receives 100 x 0.505786 = 50.58; the third receives its error x 0.505786
// and 100 x -0.052926 = -5.29.
TEST(ErrorDiffusion, SingleRowSpreadsToTheRight) {
  expectDots({{3, 1, 128, {100, 90, 30}, {0, 255, 0}}, {3, 1, 128, {100, 70, 77}, {0, 0, 255}}});
}

// The pixel below receives 100 x 0.243191 = 24.32.
TEST(ErrorDiffusion, SingleColumnSpreadsDownwards) {
  expectDots({{1, 2, 128, {100, 103}, {0, 0}}, {1, 2, 128, {100, 104}, {0, 255}}});
}

// The same levels on three rows and on two. Black is above and to the left of the pixel of
// 200. In the interior white counts 182.22 there, and (200 - 182.22) x 0.505786 = 8.99
// lifts 120 above 128. On the border white counts 255, and -27.8 does not.
TEST(ErrorDiffusion, NeighbourCorrectionIsForTheInterior) {
  expectDots({{3, 3, 128, {0, 0, 0, 0, 200, 120, 0, 0, 0}, {0, 0, 0, 0, 255, 255, 0, 0, 0}},
              {3, 2, 128, {0, 0, 0, 0, 200, 120}, {0, 0, 0, 0, 255, 0}}});
}

// 33 rows are two full blocks of the wavefront and a row.
TEST(ErrorDiffusion, EqualsTheReferenceAcrossBlocks) {
  const QVImage page = noisePage(65, 33, 6);
  const QVImage result = edf_cus(page, 128);
  EXPECT_EQ(result.width, 65);
  EXPECT_EQ(result.height, 33);
  EXPECT_EQ(result.colorType, QV_IMG_GRAY);
  EXPECT_TRUE(sameBytes(bytesOf(reference::edf_cus(toReference(page), 128)), bytesOf(result), 65));
}

TEST(ErrorDiffusion, AcceptsAnEmptyImage) {
  EXPECT_EQ(edf_cus(QVImage(0, 4, QV_IMG_GRAY), 128).byteCount(), 0U);
  EXPECT_EQ(edf_cus(QVImage(4, 0, QV_IMG_GRAY), 128).byteCount(), 0U);
}

}  // namespace
}  // namespace wren::stencil
