// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Dithering of a whole page between two buffers of the caller: grey levels in,
// dots out, one byte per pixel. CxImage::Dither stands on it, and so can a
// caller that has no use for a bitmap.
//
// Which kernel runs a method is decided here; what each kernel does is told in
// its own header.

#ifndef WREN_BITMAP_DITHER_KERNELS_H_
#define WREN_BITMAP_DITHER_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "dither/allocator.h"

/// A page to dither. All buffers are the caller's.
///
/// `levels` may be the buffer `dots` itself, with the same stride and without
/// `mirrored`; otherwise the two must not overlap, and the levels are only read.
/// Bytes of `dots` beyond `width` in a row are not written.
struct DitherPage {
  /// The first row, 0 black to 255 white. With a negative stride the page is
  /// read from its last row up.
  const std::uint8_t* levels = nullptr;
  std::ptrdiff_t levelStrideBytes = 0;

  /// The first row of the result: 255 for a white pixel, 0 for a black one.
  std::uint8_t* dots = nullptr;
  std::ptrdiff_t dotStrideBytes = 0;

  std::size_t width = 0;
  std::size_t height = 0;

  /// 256 bytes that replace each level before it is dithered, or null.
  const std::uint8_t* tone = nullptr;

  /// Read every row from right to left.
  bool mirrored = false;

  /// Write 0 for white and 255 for black.
  bool inverted = false;
};

/// Dithers a page by the method of a number as CxImage::Dither takes it. Takes a
/// few rows of working memory, whatever the height. Returns false, with nothing
/// written, when there is none.
bool ditherPage(std::int64_t method, const DitherPage& page, BitmapAllocator allocator = nullptr);

#endif  // WREN_BITMAP_DITHER_KERNELS_H_
