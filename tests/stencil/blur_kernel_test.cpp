// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "stencil/gaussian.h"
#include "stencil/unsharp.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/test_pages.h"

namespace {

using stencil::blur_taps;
using stencil::blur_taps_plain;
using stencil::blur_weights;
using stencil::BlurWeights;
using stencil::kBlurTaps;

BlurWeights stencilWeights() {
  std::array<double, kBlurTaps> kernel{};
  generateGaussianKernel1D(kBlurTaps, kUnsharpSigma, kernel.data());
  return blur_weights(kernel.data());
}

// Eleven rows of levels and both results over them.
class Taps {
 public:
  explicit Taps(int width)
      : width_(width), rows_(kBlurTaps, std::vector<float>(static_cast<std::size_t>(width))) {
    for (std::size_t k = 0; k < rows_.size(); ++k) pointers_[k] = rows_[k].data();
  }

  float& at(int tap, int x) {
    return rows_[static_cast<std::size_t>(tap)][static_cast<std::size_t>(x)];
  }

  std::vector<float> fast(const BlurWeights& weights) const {
    std::vector<float> out(static_cast<std::size_t>(width_), -1.0F);
    blur_taps(pointers_.data(), weights, out.data(), 0, width_);
    return out;
  }

  std::vector<float> plain(const BlurWeights& weights) const {
    std::vector<float> out(static_cast<std::size_t>(width_), -1.0F);
    blur_taps_plain(pointers_.data(), weights, out.data(), 0, width_);
    return out;
  }

 private:
  int width_;
  std::vector<std::vector<float>> rows_;
  std::array<const float*, kBlurTaps> pointers_{};
};

// A million random sums; about one in two thousand lies near a rounding edge.
TEST(BlurKernel, EqualsItsPlainTwinOnNoise) {
  const BlurWeights weights = stencilWeights();
  std::mt19937 random(1);
  for (int run = 0; run < 250; ++run) {
    Taps taps(4096);
    for (int tap = 0; tap < kBlurTaps; ++tap) {
      for (int x = 0; x < 4096; ++x) taps.at(tap, x) = static_cast<float>(random() % 256);
    }
    ASSERT_EQ(taps.fast(weights), taps.plain(weights)) << run;
  }
}

// Steps from one level to another at every place of the kernel: all pairs of levels.
TEST(BlurKernel, EqualsItsPlainTwinOnEverySteppedEdge) {
  const BlurWeights weights = stencilWeights();
  for (int edge = 0; edge < kBlurTaps; ++edge) {
    Taps taps(256 * 256);
    for (int tap = 0; tap < kBlurTaps; ++tap) {
      for (int x = 0; x < 256 * 256; ++x) {
        taps.at(tap, x) = static_cast<float>(tap < edge ? x / 256 : x % 256);
      }
    }
    ASSERT_EQ(taps.fast(weights), taps.plain(weights)) << edge;
  }
}

// With weights of 1/2 every odd sum lies on the edge itself, and has to round up.
TEST(BlurKernel, RedoesSumsOnTheRoundingEdge) {
  std::array<double, kBlurTaps> halves{};
  halves[4] = 0.5;
  halves[6] = 0.5;
  Taps taps(256);
  for (int x = 0; x < 256; ++x) {
    taps.at(4, x) = static_cast<float>(x);
    taps.at(6, x) = static_cast<float>(x / 2);
  }
  const std::vector<float> result = taps.fast(blur_weights(halves.data()));
  for (int x = 0; x < 256; ++x) {
    EXPECT_EQ(result[static_cast<std::size_t>(x)], static_cast<float>((x + x / 2 + 1) / 2)) << x;
  }
}

Bytes bytesOf(const std::vector<float>& levels, int width) {
  Bytes bytes;
  for (int x = 0; x < width; ++x) {
    bytes.push_back(static_cast<std::uint8_t>(levels[static_cast<std::size_t>(x)]));
  }
  return bytes;
}

// Fills the taps for one row of a pass: neighbours along the row or down the column,
// and the border's own level beyond it.
void gather(const QVImage& page, bool alongRow, int y, Taps& taps) {
  for (int tap = 0; tap < kBlurTaps; ++tap) {
    const int step = tap - kBlurTaps / 2;
    for (int x = 0; x < page.width; ++x) {
      const int column = std::clamp(x + (alongRow ? step : 0), 0, page.width - 1);
      const int row = std::clamp(y + (alongRow ? 0 : step), 0, page.height - 1);
      taps.at(tap, x) = static_cast<float>(pixelAt(page, column, row));
    }
  }
}

TEST(BlurKernel, BothEqualTheLiteralVersionOnEverySize) {
  const BlurWeights weights = stencilWeights();
  PageMaker maker(9);
  for (const PageKind kind : kPageKinds) {
    for (int width = 1; width <= 70; ++width) {
      for (int height = 1; height <= 40; ++height) {
        const QVImage page = maker.make(kind, width, height);
        const bool alongRow = maker.next(2) == 0;
        const reference::QVImage source(width, height, reference::QV_IMG_GRAY, page.data);
        const auto literal =
            reference::convolve1D(source, weights.exact.data(), kBlurTaps, alongRow);
        const int y = static_cast<int>(maker.next(static_cast<unsigned>(height)));
        Taps taps((width + 15) / 16 * 16);
        gather(page, alongRow, y, taps);
        const Bytes expected(literal.data + y * width, literal.data + (y + 1) * width);
        ASSERT_EQ(bytesOf(taps.fast(weights), width), expected) << width << " x " << height;
        ASSERT_EQ(bytesOf(taps.plain(weights), width), expected) << width << " x " << height;
      }
    }
  }
}

TEST(BlurKernel, KeepsEveryLevel) {
  Taps taps(256);
  for (int tap = 0; tap < kBlurTaps; ++tap) {
    for (int x = 0; x < 256; ++x) taps.at(tap, x) = static_cast<float>(x);
  }
  const std::vector<float> result = taps.fast(stencilWeights());
  for (int x = 0; x < 256; ++x) EXPECT_EQ(result[static_cast<std::size_t>(x)], x);
}

TEST(BlurKernel, WritesItsRangeOnly) {
  std::vector<float> out(64, -1.0F);
  std::vector<float> row(80, 7.0F);
  std::array<const float*, kBlurTaps> pointers{};
  for (std::size_t k = 0; k < pointers.size(); ++k) pointers[k] = row.data() + k;
  blur_taps(pointers.data(), stencilWeights(), out.data(), 16, 48);
  for (std::size_t x = 0; x < out.size(); ++x) {
    EXPECT_EQ(out[x], x >= 16 && x < 48 ? 7.0F : -1.0F) << x;
  }
}

}  // namespace
