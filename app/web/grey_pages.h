// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages of grey levels as a browser sends and shows them: as wide as the print head, one below
// the other in one block.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/page_sink.h"

namespace wren::app::web {

struct GreyPages {
  unsigned widthPx = 0;              ///< that of the head
  std::vector<unsigned> heightsPx;   ///< of each page, at least 1
  std::vector<std::uint8_t> levels;  ///< 0 = black, 255 = paper; the rows of all pages

  unsigned rows() const {
    unsigned sum = 0;
    for (const unsigned heightPx : heightsPx) sum += heightPx;
    return sum;
  }

  /// Whether every page has rows, and `levels` all of them.
  bool isComplete() const {
    if (widthPx == 0 || heightsPx.empty()) return false;
    for (const unsigned heightPx : heightsPx) {
      if (heightPx == 0) return false;
    }
    const std::size_t wanted = static_cast<std::size_t>(widthPx) * rows();
    return levels.size() == wanted;
  }
};

/// Rows of all pages of a document in a browser together: 2 m of paper. A canvas is not higher in
/// every browser.
inline constexpr unsigned kMaxGreyRows = 16'000;

/// Sends the pages to a sink.
/// @return false if the sink stopped them.
bool sendPages(const GreyPages& pages, PageSink& sink);

}  // namespace wren::app::web
