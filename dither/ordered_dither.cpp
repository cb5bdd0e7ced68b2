// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/ordered_dither.h"

#include <cstddef>
#include <cstdint>

#include "dither/row_kernels.h"

namespace wren::dither {

namespace {

RowThresholds thresholdsOfRow(const ThresholdMatrix& matrix, std::size_t y) {
  RowThresholds thresholds = {};
  for (std::size_t x = 0; x < thresholds.size(); ++x) thresholds[x] = matrix[4 * (y % 4) + x % 4];
  return thresholds;
}

}  // namespace

void ditherOrdered(const ThresholdMatrix& thresholds, const LevelRows& rows) {
  for (std::size_t y = 0; y < rows.height(); ++y) {
    const std::uint8_t* levels = rows.levels(y);
    thresholdRow(levels, thresholdsOfRow(thresholds, y), rows.flip(), rows.width(), rows.dots(y));
    rows.finish(y + 1);
  }
}

}  // namespace wren::dither
