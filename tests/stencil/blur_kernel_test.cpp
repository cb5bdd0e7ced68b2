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
#include "tests/support/vector_levels.h"

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
      : rows_(kUnsharpSize,
              std::vector<std::int16_t>(static_cast<std::size_t>((width + 15) / 16 * 16))) {}

  void set(int tap, int x, int level) {
    rows_[static_cast<std::size_t>(tap)][static_cast<std::size_t>(x)] =
        static_cast<std::int16_t>(level << kLevelFractionBits);
  }

  Bytes blurred(const BlurWeights& weights) const {
    std::array<const std::int16_t*, kUnsharpSize> pointers{};
    for (std::size_t k = 0; k < rows_.size(); ++k) pointers[k] = rows_[k].data();
    std::vector<std::int16_t> out(rows_[0].size(), -1);
    blur(pointers.data(), weights, out.data(), 0, static_cast<int>(out.size()));
    Bytes levels;
    for (const std::int16_t sixteenths : out) {
      EXPECT_EQ(sixteenths & ((1 << kLevelFractionBits) - 1), 0);
      levels.push_back(static_cast<std::uint8_t>(sixteenths >> kLevelFractionBits));
    }
    return levels;
  }

 private:
  std::vector<std::vector<std::int16_t>> rows_;
};

// A page of `kUnsharpSize` rows is one pass: its middle row sees every row once.
Bytes blurredMiddleRow(const QVImage& page) {
  Pass pass(page.width);
  for (int tap = 0; tap < kUnsharpSize; ++tap) {
    for (int x = 0; x < page.width; ++x) pass.set(tap, x, pixelAt(page, x, tap));
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

class BlurKernel : public wren_test::VectorLevelTest {};
INSTANTIATE_TEST_SUITE_P(Level, BlurKernel, testing::ValuesIn(wren::machineVectorLevels()),
                         wren_test::vectorLevelTestName);

// A million random sums; about one in twenty thousand is near a rounding edge.
TEST_P(BlurKernel, EqualsTheReferenceOnNoise) {
  for (unsigned seed = 0; seed < 250; ++seed) {
    const QVImage page = noisePage(4096, kUnsharpSize, seed);
    ASSERT_TRUE(sameBytes(referenceMiddleRow(page), blurredMiddleRow(page), page.width)) << seed;
  }
}

// Steps from one level to another at every tap, for all pairs of levels.
TEST_P(BlurKernel, EqualsTheReferenceOnEveryStep) {
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
TEST_P(BlurKernel, EqualsTheReferenceOnEverySize) {
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
        pass.set(tap, x, pixelAt(page, column, row));
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

// With eight weights of 1/8 and two groups of equal inputs every odd sum lies exactly on the
// rounding edge.
TEST_P(BlurKernel, RoundsSumsOnTheEdgeUp) {
  std::array<double, kUnsharpSize> eighths{};
  for (const std::size_t tap : {1, 2, 3, 4, 6, 7, 8, 9}) eighths[tap] = 0.125;
  Pass pass(256);
  Bytes expected;
  for (int x = 0; x < 256; ++x) {
    for (const int tap : {1, 2, 3, 4}) pass.set(tap, x, x);
    for (const int tap : {6, 7, 8, 9}) pass.set(tap, x, x / 2);
    expected.push_back(static_cast<std::uint8_t>((x + x / 2 + 1) / 2));
  }
  EXPECT_TRUE(sameBytes(expected, pass.blurred(blurWeights(eighths.data())), 256));
}

// `SharpRows` skips pixels whose surroundings have one level.
TEST_P(BlurKernel, KeepsEveryLevelOfAUniformPage) {
  Pass pass(256);
  Bytes expected;
  for (int x = 0; x < 256; ++x) {
    for (int tap = 0; tap < kUnsharpSize; ++tap) pass.set(tap, x, x);
    expected.push_back(static_cast<std::uint8_t>(x));
  }
  EXPECT_TRUE(sameBytes(expected, pass.blurred(stencilWeights()), 256));
}

TEST_P(BlurKernel, WritesItsRangeOnly) {
  const std::int16_t level = 7 << kLevelFractionBits;
  std::vector<std::int16_t> out(64, -1);
  std::vector<std::int16_t> row(80, level);
  std::array<const std::int16_t*, kUnsharpSize> overlapping{};
  for (std::size_t k = 0; k < overlapping.size(); ++k) overlapping[k] = row.data() + k;
  blur(overlapping.data(), stencilWeights(), out.data(), 16, 48);
  for (std::size_t x = 0; x < out.size(); ++x) {
    EXPECT_EQ(out[x], x >= 16 && x < 48 ? level : -1) << x;
  }
}

}  // namespace
}  // namespace wren::stencil
