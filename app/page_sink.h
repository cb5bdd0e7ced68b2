// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Between what reads a document and what prints it: pages of ink levels, row by row, so that
// no one holds more of a document than a page.

#pragma once

#include <cstdint>

namespace wren::app {

/// Resolution of every page and of the print heads, in dots per inch, both ways.
inline constexpr unsigned kDotsPerInch = 203;

class PageSink {
 public:
  PageSink() = default;
  PageSink(const PageSink&) = delete;
  PageSink& operator=(const PageSink&) = delete;
  virtual ~PageSink() = default;

  /// Starts a page of `heightPx` rows of `widthPx` pixels, both at least 1.
  /// @return false if the document is to stop here; the page is then not to be sent.
  virtual bool beginPage(unsigned widthPx, unsigned heightPx) = 0;

  /// Takes the next row, top row first: `widthPx` levels, 0 = bare paper, 255 = ink. They are
  /// copied.
  virtual void addRow(const std::uint8_t* ink) = 0;

  /// Prints the page, all rows of which were added. A page that is never ended is not printed.
  /// @return false if the document is to stop here.
  virtual bool endPage() = 0;
};

}  // namespace wren::app
