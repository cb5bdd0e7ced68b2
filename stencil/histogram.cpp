// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/histogram.h"

#include <cstddef>

#include "stencil/equal_pixels.h"

namespace wren::stencil {

void HistogramBuilder::add(const std::uint8_t* pixels, int count) {
  int x = 0;
  for (; count - x >= 8; x += 8) {
    const std::uint8_t* p = pixels + x;
    if (areEightEqual(p)) {
      tables_[0][*p] += 8;
      continue;
    }
    for (std::size_t k = 0; k < tables_.size(); ++k) {
      ++tables_[k][p[2 * k]];
      ++tables_[k][p[2 * k + 1]];
    }
  }
  for (; x < count; ++x) ++tables_[0][pixels[x]];
}

Histogram HistogramBuilder::histogram() const {
  Histogram sums{};
  for (const Histogram& table : tables_) {
    for (std::size_t level = 0; level < sums.size(); ++level) sums[level] += table[level];
  }
  return sums;
}

}  // namespace wren::stencil
