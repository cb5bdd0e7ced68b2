// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A page to dither: grey levels in, dots out, one byte per pixel each. It owns nothing.

#pragma once

#include <cstddef>
#include <cstdint>

namespace wren::dither {

/// The buffers of a page and how to read them. All buffers are the caller's.
///
/// `levels` may be `dots` itself, with the same stride and without `mirrored`. Otherwise
/// the two buffers must not overlap, and `levels` is only read. Bytes of `dots` beyond
/// `width` in a row are not written.
struct Page {
  /// First row that is read; 0 is black and 255 white, as in the literature. In a job 255 is
  /// full ink. A negative stride reads the page from its last row upwards.
  const std::uint8_t* levels = nullptr;
  std::ptrdiff_t levelStrideBytes = 0;

  /// First row of the result: 255 for a white pixel, 0 for a black one.
  std::uint8_t* dots = nullptr;
  std::ptrdiff_t dotStrideBytes = 0;

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
