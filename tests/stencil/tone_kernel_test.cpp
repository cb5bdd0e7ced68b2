// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone_kernel.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "stencil/blur_kernel.h"
#include "tests/support/vector_levels.h"

namespace wren::stencil {
namespace {

using Pixels = std::vector<std::uint8_t>;
using Words = std::vector<std::int16_t>;

class ToneKernel : public wren_test::VectorLevelTest {
 protected:
  // Any table: no kernel may rely on a curve that rises.
  ToneKernel() {
    for (auto& level : curve_) level = static_cast<std::uint8_t>(random_());
  }

  Words toned(const Pixels& pixels) const {
    Words words;
    for (const std::uint8_t pixel : pixels) {
      words.push_back(static_cast<std::int16_t>(curve_[pixel] << kLevelFractionBits));
    }
    return words;
  }

  std::mt19937 random_{5};
  ToneCurve curve_;
};

INSTANTIATE_TEST_SUITE_P(Level, ToneKernel, testing::ValuesIn(machineVectorLevels()),
                         wren_test::vectorLevelTestName);

TEST_P(ToneKernel, LooksUpEveryLevelInAnyNumberOfChunks) {
  for (int chunks = 0; chunks <= 17; ++chunks) {
    Pixels pixels(static_cast<std::size_t>(chunks * kChunkPx));
    for (std::size_t x = 0; x < pixels.size(); ++x) pixels[x] = static_cast<std::uint8_t>(37 * x);
    Words expected = toned(pixels);
    expected.resize(expected.size() + kChunkPx, -7);
    Words out(expected.size(), -7);
    Words levels(static_cast<std::size_t>(chunks) + 1, -7);
    applyToneCurve(curve_, pixels.data(), out.data(), levels.data(), chunks);
    EXPECT_EQ(out, expected) << chunks << " chunks";
    Words expectedLevels(static_cast<std::size_t>(chunks), kMixedChunk);
    expectedLevels.push_back(-7);
    EXPECT_EQ(levels, expectedLevels) << chunks << " chunks";
  }
}

TEST_P(ToneKernel, FindsTheChunksOfOneLevel) {
  for (int i = 0; i < 2000; ++i) {
    Pixels pixels;
    Words expected;
    for (int chunk = 0; chunk < 5; ++chunk) {
      const auto level = static_cast<std::uint8_t>(random_());
      pixels.resize(pixels.size() + kChunkPx, level);
      expected.push_back(curve_[level]);
      if (random_() % 2 == 0) continue;
      pixels[pixels.size() - 1 - random_() % kChunkPx] ^=
          static_cast<std::uint8_t>(1 << random_() % 8);
      expected.back() = kMixedChunk;
    }
    Words out(pixels.size());
    Words levels(expected.size());
    applyToneCurve(curve_, pixels.data(), out.data(), levels.data(), 5);
    ASSERT_EQ(levels, expected) << "case " << i;
    ASSERT_EQ(out, toned(pixels)) << "case " << i;
  }
}

}  // namespace
}  // namespace wren::stencil
