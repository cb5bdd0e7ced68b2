// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where a job's pages come from.
#pragma once

#include <cups/raster.h>

class PageSource {
 public:
  PageSource() = default;
  PageSource(const PageSource&) = delete;
  PageSource& operator=(const PageSource&) = delete;
  virtual ~PageSource() = default;

  /// Reads the header of the next page; false when there is none.
  virtual bool readHeader(cups_page_header2_s& header) = 0;

  /// Reads the pixels of the page whose header was read last.
  /// @param pixels room for size bytes.
  /// @return false when the page is not complete.
  virtual bool readPixels(unsigned char* pixels, unsigned size) = 0;
};
