// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/histogram.h"

#include <cstddef>

#include "stencil/equal_pixels.h"

namespace wren::stencil {

void HistogramBuilder::add(const std::uint8_t* pixels, int count) {
  int x = 0;
  for (; count - x >= 16; x += 16) {
    const std::uint8_t* p = pixels + x;
    if (areSixteenEqual(p)) {
      tables_[0][*p] += 16;
      continue;
    }
#pragma GCC unroll 16
    for (std::size_t i = 0; i < 16; ++i) ++tables_[i / 2 % tables_.size()][p[i]];
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
