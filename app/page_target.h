// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a document has to know of the paper before it can be turned into pages.

#pragma once

namespace wren::app {

/// Widths and heights are in dots (`kDotsPerInch`).
struct PageTarget {
  unsigned headWidthPx = 576;    ///< width of the print head
  unsigned paperWidthPx = 640;   ///< width of the paper; a page up to it prints 1:1
  bool fitWidePages = true;      ///< a wider page is scaled to the head; else it is cut
  unsigned maxHeightPx = 26215;  ///< the longest page, about 3.28 m
};

}  // namespace wren::app
