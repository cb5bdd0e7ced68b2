// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the pages of a job come from.

#pragma once

#include <cups/raster.h>

#include <cstdint>

namespace wren::job {

class PageSource {
 public:
  PageSource() = default;
  PageSource(const PageSource&) = delete;
  PageSource& operator=(const PageSource&) = delete;
  virtual ~PageSource() = default;

  /// Reads the header of the next page; false if there is none.
  virtual bool readHeader(cups_page_header2_s& header) = 0;

  /// Reads the pixels of the page whose header was read last: rows of `cupsBytesPerLine`
  /// bytes, top row first, 0 = bare paper.
  /// @param pixels room for `size` bytes.
  /// @return false if the page is not complete.
  virtual bool readPixels(std::uint8_t* pixels, unsigned size) = 0;
};

}  // namespace wren::job
