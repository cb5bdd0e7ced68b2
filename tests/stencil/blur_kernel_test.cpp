// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "stencil/gaussian_kernel.h"
#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"

namespace wren::stencil {
namespace {

BlurWeights stencilWeights() {
  std::array<double, kUnsharpSize> kernel{};
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel.data());
  return blurWeights(kernel.data());
}

// The input rows of one pass and its output.
class Pass {
 public:
  explicit Pass(int width)
      : rows_(kUnsharpSize, std::vector<float>(static_cast<std::size_t>((width + 15) / 16 * 16))) {}

  float& at(int tap, int x) {
    return rows_[static_cast<std::size_t>(tap)][static_cast<std::size_t>(x)];
  }

  Bytes blurred(const BlurWeights& weights) const {
    std::array<const float*, kUnsharpSize> pointers{};
    for (std::size_t k = 0; k < rows_.size(); ++k) pointers[k] = rows_[k].data();
    std::vector<float> out(rows_[0].size(), -1.0F);
    blur(pointers.data(), weights, out.data(), 0, static_cast<int>(out.size()));
    return {out.begin(), out.end()};
  }

 private:
  std::vector<std::vector<float>> rows_;
};

// A page of `kUnsharpSize` rows is one pass: its middle row sees every row once.
Bytes blurredMiddleRow(const QVImage& page) {
  Pass pass(page.width);
  for (int tap = 0; tap < kUnsharpSize; ++tap) {
    for (int x = 0; x < page.width; ++x) pass.at(tap, x) = pixelAt(page, x, tap);
  }
  Bytes row = pass.blurred(stencilWeights());
  row.resize(static_cast<std::size_t>(page.width));
  return row;
}

Bytes referenceMiddleRow(const QVImage& page) {
  const auto all =
      reference::convolve1D(toReference(page), stencilWeights().exact.data(), kUnsharpSize, false);
  const auto* row = all.data + std::ptrdiff_t{kBlurRadius} * page.width;
  return {row, row + page.width};
}

// A million random sums; about one in two thousand is near a rounding edge.
TEST(BlurKernel, EqualsTheReferenceOnNoise) {
  for (unsigned seed = 0; seed < 250; ++seed) {
    const QVImage page = noisePage(4096, kUnsharpSize, seed);
    ASSERT_TRUE(sameBytes(referenceMiddleRow(page), blurredMiddleRow(page), page.width)) << seed;
  }
}

// Steps from one level to another at every tap, for all pairs of levels.
TEST(BlurKernel, EqualsTheReferenceOnEveryStep) {
  for (int edge = 0; edge < kUnsharpSize; ++edge) {
    QVImage page(256 * 256, kUnsharpSize, QV_IMG_GRAY);
    std::uint8_t* pixel = page.data;
    for (int y = 0; y < kUnsharpSize; ++y) {
      for (int x = 0; x < page.width; ++x) {
        *pixel++ = static_cast<std::uint8_t>(y < edge ? x / 256 : x % 256);
      }
    }
    ASSERT_TRUE(sameBytes(referenceMiddleRow(page), blurredMiddleRow(page), page.width)) << edge;
  }
}

// One row of a page of any size: neighbours along the row or down the column, and the
// edge pixels repeated beyond the page.
TEST(BlurKernel, EqualsTheReferenceOnEverySize) {
  const BlurWeights weights = stencilWeights();
  onEveryPage(1, [&](const QVImage& page, PageMaker& maker) {
    const bool horizontal = maker.below(2) == 0;
    const int y = maker.below(page.height);
    Pass pass(page.width);
    for (int tap = 0; tap < kUnsharpSize; ++tap) {
      const int step = tap - kBlurRadius;
      for (int x = 0; x < page.width; ++x) {
        const int column = std::clamp(x + (horizontal ? step : 0), 0, page.width - 1);
        const int row = std::clamp(y + (horizontal ? 0 : step), 0, page.height - 1);
        pass.at(tap, x) = pixelAt(page, column, row);
      }
    }
    Bytes actual = pass.blurred(weights);
    actual.resize(static_cast<std::size_t>(page.width));
    const auto all =
        reference::convolve1D(toReference(page), weights.exact.data(), kUnsharpSize, horizontal);
    const Bytes expected(all.data + y * page.width, all.data + (y + 1) * page.width);
    EXPECT_TRUE(sameBytes(expected, actual, page.width));
  });
}

// With two weights of 1/2 every odd sum lies exactly on the rounding edge.
TEST(BlurKernel, RoundsSumsOnTheEdgeUp) {
  std::array<double, kUnsharpSize> halves{};
  halves[4] = 0.5;
  halves[6] = 0.5;
  Pass pass(256);
  Bytes expected;
  for (int x = 0; x < 256; ++x) {
    pass.at(4, x) = static_cast<float>(x);
    pass.at(6, x) = static_cast<float>(x / 2);
    expected.push_back(static_cast<std::uint8_t>((x + x / 2 + 1) / 2));
  }
  EXPECT_TRUE(sameBytes(expected, pass.blurred(blurWeights(halves.data())), 256));
}

// `SharpRows` skips pixels whose surroundings have one level.
TEST(BlurKernel, KeepsEveryLevelOfAUniformPage) {
  Pass pass(256);
  Bytes expected;
  for (int x = 0; x < 256; ++x) {
    for (int tap = 0; tap < kUnsharpSize; ++tap) pass.at(tap, x) = static_cast<float>(x);
    expected.push_back(static_cast<std::uint8_t>(x));
  }
  EXPECT_TRUE(sameBytes(expected, pass.blurred(stencilWeights()), 256));
}

TEST(BlurKernel, WritesItsRangeOnly) {
  std::vector<float> out(64, -1.0F);
  std::vector<float> row(80, 7.0F);
  std::array<const float*, kUnsharpSize> overlapping{};
  for (std::size_t k = 0; k < overlapping.size(); ++k) overlapping[k] = row.data() + k;
  blur(overlapping.data(), stencilWeights(), out.data(), 16, 48);
  for (std::size_t x = 0; x < out.size(); ++x) {
    EXPECT_EQ(out[x], x >= 16 && x < 48 ? 7.0F : -1.0F) << x;
  }
}

}  // namespace
}  // namespace wren::stencil
