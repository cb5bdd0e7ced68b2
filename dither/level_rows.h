// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The rows of a page as the dither kernels read them: turned, mirrored and with
// their tone applied, one row at a time, just before a kernel needs it. The row
// is made in the place where its dots will be, so that no page is copied.

#ifndef WREN_BITMAP_LEVEL_ROWS_H_
#define WREN_BITMAP_LEVEL_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "dither/dither_page.h"

/// Grey levels of a page, row by row. The page's buffers must outlive it.
class LevelRows {
 public:
  explicit LevelRows(const DitherPage& page);

  /// The levels of row `y`, `width` bytes. They may stand in `dots(y)`: call this
  /// once for a row, before the first of its dots is written.
  const std::uint8_t* levels(std::size_t y) const;

  /// The same, always made in the place of the dots. For a kernel that works on
  /// many rows at once: they are then near at hand, and read once from afar, in
  /// one go.
  std::uint8_t* levelsInPlace(std::size_t y) const;

  /// Where the dots of row `y` go.
  std::uint8_t* dots(std::size_t y) const;

  std::size_t width() const { return page_.width; }
  std::size_t height() const { return page_.height; }

  /// What to combine a dot of 255 (white) or 0 with by exclusive or.
  std::uint8_t flip() const { return page_.inverted ? 255 : 0; }

 private:
  const std::uint8_t* source(std::size_t y) const;
  void copyToned(const std::uint8_t* from, std::uint8_t* to) const;

  DitherPage page_;
  bool isShift_;  // the tone only adds `shift_` and clamps
  int shift_;
};

#endif  // WREN_BITMAP_LEVEL_ROWS_H_
