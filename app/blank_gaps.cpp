// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/blank_gaps.h"

#include <algorithm>

namespace wren::app {

unsigned shortenBlankGaps(std::vector<std::uint8_t>& levels, unsigned widthPx, unsigned heightPx,
                          unsigned longestRows) {
  const auto rowAt = [&](unsigned y) { return levels.begin() + std::ptrdiff_t{y} * widthPx; };
  const auto isBlank = [&](unsigned y) {
    return std::all_of(rowAt(y), rowAt(y) + widthPx, [](std::uint8_t level) { return level == 0; });
  };
  unsigned kept = 0;
  unsigned y = 0;
  while (y < heightPx) {
    const unsigned first = y;
    while (y < heightPx && isBlank(y)) ++y;
    const bool isInside = first > 0 && y < heightPx;
    const unsigned blanks = isInside ? std::min(y - first, longestRows) : y - first;
    const unsigned content = y;
    while (y < heightPx && !isBlank(y)) ++y;
    std::copy(rowAt(content - blanks), rowAt(y), rowAt(kept));
    kept += blanks + (y - content);
  }
  levels.resize(std::size_t{kept} * widthPx);
  return kept;
}

}  // namespace wren::app
