// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/ordered_dither.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace wren::dither {

namespace {

// Columns per step: the bytes of a vector register, four periods of the matrix.
constexpr std::size_t kStep = 16;
using StepBytes = std::array<std::uint8_t, kStep>;

StepBytes thresholdsOfRow(const ThresholdMatrix& matrix, std::size_t y) {
  StepBytes thresholds = {};
  for (std::size_t x = 0; x < kStep; ++x) thresholds[x] = matrix[4 * (y % 4) + x % 4];
  return thresholds;
}

std::uint8_t dotOf(std::uint8_t level, std::uint8_t threshold, std::uint8_t flip) {
  return static_cast<std::uint8_t>((level > threshold ? 255 : 0) ^ flip);
}

// The inner loop has a fixed length, so that the compiler makes one vector comparison of it.
void ditherRow(const std::uint8_t* levels, const StepBytes& thresholds, std::uint8_t flip,
               std::size_t width, std::uint8_t* dots) {
  std::size_t x = 0;
  for (; x + kStep <= width; x += kStep) {
    StepBytes result;
    for (std::size_t i = 0; i < kStep; ++i) result[i] = dotOf(levels[x + i], thresholds[i], flip);
    std::copy(result.begin(), result.end(), dots + x);
  }
  for (; x < width; ++x) dots[x] = dotOf(levels[x], thresholds[x % kStep], flip);
}

}  // namespace

void ditherOrdered(const ThresholdMatrix& thresholds, const LevelRows& rows) {
  for (std::size_t y = 0; y < rows.height(); ++y) {
    const std::uint8_t* levels = rows.levels(y);
    ditherRow(levels, thresholdsOfRow(thresholds, y), rows.flip(), rows.width(), rows.dots(y));
  }
}

}  // namespace wren::dither
