// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/area_scaler.h"

#include <algorithm>

namespace wren::app {

AreaScaler::AreaScaler(unsigned fromWidthPx, unsigned fromHeightPx, unsigned toWidthPx,
                       unsigned toHeightPx, std::uint8_t* to)
    : fromWidthPx_(fromWidthPx),
      fromHeightPx_(fromHeightPx),
      toWidthPx_(toWidthPx),
      toHeightPx_(toHeightPx),
      to_(to),
      sums_(toWidthPx) {}

// A row covers `toHeightPx_` of the units of which a scaled row takes `fromHeightPx_`, and the same
// across.
void AreaScaler::addRow(const std::uint8_t* levels) {
  std::uint64_t top = std::uint64_t{rowsTaken_++} * toHeightPx_;
  const std::uint64_t bottom = top + toHeightPx_;
  while (top < bottom) {
    const std::uint64_t rowEnd = (std::uint64_t{rowsMade_} + 1) * fromHeightPx_;
    const std::uint64_t until = std::min(bottom, rowEnd);
    addToSums(levels, until - top);
    if (until == rowEnd) finishRow();
    top = until;
  }
}

void AreaScaler::addToSums(const std::uint8_t* levels, std::uint64_t weight) {
  std::uint64_t left = 0;
  std::uint64_t columnEnd = fromWidthPx_;
  unsigned column = 0;
  for (unsigned x = 0; x < fromWidthPx_; ++x) {
    const std::uint64_t right = left + toWidthPx_;
    while (left < right) {
      const std::uint64_t until = std::min(right, columnEnd);
      sums_[column] += weight * (until - left) * levels[x];
      if (until == columnEnd) {
        ++column;
        columnEnd += fromWidthPx_;
      }
      left = until;
    }
  }
}

void AreaScaler::finishRow() {
  const std::uint64_t area = std::uint64_t{fromWidthPx_} * fromHeightPx_;
  std::uint8_t* row = to_ + std::size_t{rowsMade_} * toWidthPx_;
  for (unsigned x = 0; x < toWidthPx_; ++x) {
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): the contract asks for sizes of at least 1
    row[x] = static_cast<std::uint8_t>((sums_[x] + area / 2) / area);
  }
  std::fill(sums_.begin(), sums_.end(), 0);
  ++rowsMade_;
}

}  // namespace wren::app
