// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The raster lines of a page as the dither kernels read them: rotated, mirrored and with
// the tone curve applied. Each row is prepared just before a kernel needs it, in the place
// where its dots will be written, so that no page is copied.

#pragma once

#include <cstddef>
#include <cstdint>

#include "dither/page.h"

namespace wren::dither {

/// Grey levels of a page, row by row. The page's buffers must outlive it.
class LevelRows {
 public:
  explicit LevelRows(const Page& page);

  /// The levels of row `y`, `width` bytes. They may be in `dots(y)`: call this once per row,
  /// before the first of its dots is written.
  const std::uint8_t* levels(std::size_t y) const;

  /// The same, always copied to `dots(y)`. For a kernel that works on many rows at once:
  /// one sequential read per row, after which the rows are in cache.
  std::uint8_t* levelsInPlace(std::size_t y) const;

  /// Asks for row `y` to be brought into cache; does nothing below the page.
  void prefetch(std::size_t y) const;

  /// Where the dots of row `y` go.
  std::uint8_t* dots(std::size_t y) const;

  /// Reports that the dots of the first `rows` rows are final.
  void finish(std::size_t rows) const { page_.finished.report(rows); }

  std::size_t width() const { return page_.width; }
  std::size_t height() const { return page_.height; }

  /// XOR mask for dots of 255 (white) and 0 (black): 255 for an inverted page.
  std::uint8_t flip() const { return page_.inverted ? 255 : 0; }

 private:
  const std::uint8_t* source(std::size_t y) const;
  void applyTone(const std::uint8_t* from, std::uint8_t* to) const;

  Page page_;
  bool isShift_;  // the tone curve only adds `shift_` and clamps
  int shift_;
};

}  // namespace wren::dither
