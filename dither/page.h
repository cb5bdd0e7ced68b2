// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A page to dither: grey levels in, dots out, one byte per pixel each. It owns nothing.

#pragma once

#include <cstddef>
#include <cstdint>

#include "common/finished_rows.h"

namespace wren::dither {

/// The buffers of a page and how to read them. All buffers are the caller's.
///
/// `levels` may be `dots` itself, with the same stride and without `mirrored`. Otherwise
/// the two buffers must not overlap, and `levels` is only read. Bytes of `dots` beyond
/// `width` in a row are not written.
///
/// With `dotRows` the dots go to a ring of rows, each of which is final when it is reported
/// and is overwritten later: row y + `dotRows` takes the place of row y. The ring must have
/// `kMinDotRows` rows, and may not be `levels`.
struct Page {
  /// Rows that a method may have begun and not yet reported, and 8 rows for a caller that
  /// takes them in bands.
  static constexpr std::size_t kMinDotRows = 48;

  /// First row that is read; 0 is black and 255 white, as in the literature. In a job 255 is
  /// full ink. A negative stride reads the page from its last row upwards.
  const std::uint8_t* levels = nullptr;
  std::ptrdiff_t levelStrideBytes = 0;

  /// First row of the result: 255 for a white pixel, 0 for a black one.
  std::uint8_t* dots = nullptr;
  std::ptrdiff_t dotStrideBytes = 0;

  std::size_t dotRows = 0;  ///< Rows in the ring; 0 if `dots` is a whole page.
  FinishedRows finished;    ///< Hears of finished rows, from the top of the page down.

  std::size_t width = 0;   ///< Pixels.
  std::size_t height = 0;  ///< Rows.

  /// Lookup table of 256 entries that is applied to each level before it is dithered; null
  /// for none.
  const std::uint8_t* tone = nullptr;

  /// Read each row from right to left.
  bool mirrored = false;

  /// Write 0 for white and 255 for black.
  bool inverted = false;
};

}  // namespace wren::dither
