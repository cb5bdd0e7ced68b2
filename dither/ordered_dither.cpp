// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/ordered_dither.h"

#include <algorithm>

namespace {

// As many columns at a time as a vector register has bytes.
constexpr std::size_t kStep = 16;
using Pattern = std::array<std::uint8_t, kStep>;

Pattern patternOfRow(const ThresholdCell& cell, std::size_t y) {
  Pattern pattern = {};
  for (std::size_t x = 0; x < kStep; ++x) pattern[x] = cell[4 * (y % 4) + x % 4];
  return pattern;
}

std::uint8_t dotOf(std::uint8_t level, std::uint8_t threshold, std::uint8_t flip) {
  return static_cast<std::uint8_t>((level > threshold ? 255 : 0) ^ flip);
}

// The inner loop has a fixed length, so that it becomes one vector comparison.
void ditherRow(const std::uint8_t* levels, const Pattern& pattern, std::uint8_t flip,
               std::size_t width, std::uint8_t* dots) {
  std::size_t x = 0;
  for (; x + kStep <= width; x += kStep) {
    Pattern result;
    for (std::size_t i = 0; i < kStep; ++i) result[i] = dotOf(levels[x + i], pattern[i], flip);
    std::copy(result.begin(), result.end(), dots + x);
  }
  for (; x < width; ++x) dots[x] = dotOf(levels[x], pattern[x % kStep], flip);
}

}  // namespace

void ditherByThresholds(const ThresholdCell& cell, const LevelRows& rows) {
  for (std::size_t y = 0; y < rows.height(); ++y) {
    const std::uint8_t* levels = rows.levels(y);
    ditherRow(levels, patternOfRow(cell, y), rows.flip(), rows.width(), rows.dots(y));
  }
}

void ditherByThresholdsPlain(const ThresholdCell& cell, const LevelRows& rows) {
  for (std::size_t y = 0; y < rows.height(); ++y) {
    const std::uint8_t* levels = rows.levels(y);
    for (std::size_t x = 0; x < rows.width(); ++x) {
      rows.dots(y)[x] = dotOf(levels[x], cell[4 * (y % 4) + x % 4], rows.flip());
    }
  }
}
