// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/grey_pages.h"

#include <algorithm>

namespace wren::app::web {

bool sendPages(const GreyPages& pages, PageSink& sink) {
  std::vector<std::uint8_t> ink(pages.widthPx);
  const std::uint8_t* row = pages.levels.data();
  for (const unsigned heightPx : pages.heightsPx) {
    if (!sink.beginPage(pages.widthPx, heightPx)) return false;
    for (unsigned y = 0; y < heightPx; ++y, row += pages.widthPx) {
      std::transform(row, row + pages.widthPx, ink.begin(),
                     [](std::uint8_t level) { return static_cast<std::uint8_t>(255 - level); });
      sink.addRow(ink.data());
    }
    if (!sink.endPage()) return false;
  }
  return true;
}

}  // namespace wren::app::web
