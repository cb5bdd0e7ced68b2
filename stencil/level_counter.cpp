// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/level_counter.h"

#include "stencil/pixel_run.h"

namespace stencil {

void LevelCounter::add_row(const std::uint8_t* pixels, int width) {
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    const std::uint8_t* p = pixels + x;
    if (are_eight_equal(p)) {
      tables_[0][*p] += 8;
      continue;
    }
    for (std::size_t k = 0; k < 4; ++k) {
      ++tables_[k][p[2 * k]];
      ++tables_[k][p[2 * k + 1]];
    }
  }
  for (; x < width; ++x) ++tables_[0][pixels[x]];
}

GreyCounts LevelCounter::counts() const {
  GreyCounts sums{};
  for (const Table& table : tables_) {
    for (std::size_t level = 0; level < sums.size(); ++level) sums[level] += table[level];
  }
  return sums;
}

}  // namespace stencil
