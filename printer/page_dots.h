// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// From grey levels to dots: tone, orientation, halftone method and negative. This is the only
// place that turns the options of a page into dots.

#pragma once

#include <cstddef>
#include <cstdint>

#include "common/cancel_check.h"
#include "common/finished_rows.h"

namespace wren::printer {

/// A page of grey levels, not owned: `height` rows of `width` bytes, `strideBytes` apart.
struct GreyPage {
  const std::uint8_t* levels = nullptr;
  std::size_t strideBytes = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// What is done to a page, in this order: tone, rotation, mirroring, halftone, negative.
struct DotOptions {
  int brightness = 0;  ///< -100 to 100; positive values raise the levels
  int contrast = 0;    ///< -100 to 100
  bool rotate180 = false;
  bool mirror = false;
  bool stencil = false;     ///< the stencil method in place of a classic one
  std::int64_t method = 0;  ///< number of the classic method (dither/dither_page.h)
  bool negative = false;
};

/// Whether a page has a size that can be printed: at least one pixel, and at most as many as
/// a bitmap of 8 bits per pixel may have (2^32 - 1 bits).
constexpr bool hasPrintableSize(std::uint32_t width, std::uint32_t height) {
  constexpr std::uint64_t kMaxPixels = 0xFFFFFFFF / 8;
  return width > 0 && height > 0 && std::uint64_t{width} * height <= kMaxPixels;
}

/// Makes the dots of a page. A page without levels (null) or without a printable size gets no
/// dots, whatever the tone; `negative` applies to it as well.
/// @param out `height` rows, `page.strideBytes` apart: `width` bytes of each row become 0 or
///   255, the bytes beyond keep their values. May overlap the page. Nothing is written if
///   rows are shorter than `width`.
/// @param cancel asked at least once per 256 rows by the stencil method; the lower rows are
///   undefined once it is cancelled.
/// @return false for a page without levels or without a printable size.
/// Out of memory: calls the new-handler, or throws std::bad_alloc.
bool makePageDots(const DotOptions& options, const GreyPage& page, std::uint8_t* out,
                  CancelCheck cancel);

/// A ring of rows of dots, not owned: row y of a page goes to place y % `kDotRingRows`.
struct DotRing {
  std::uint8_t* rows = nullptr;  ///< `kDotRingRows` rows of `width` bytes.
  FinishedRows finished;         ///< Takes the rows, in groups of at most 8.
};

/// Rows of a `DotRing`.
inline constexpr int kDotRingRows = 48;

/// Whether `makeDotRows` can make the dots of a page: its rows have no padding, and the method
/// needs no copy of the page.
bool canMakeDotRows(const DotOptions& options, const GreyPage& page);

/// Makes the same dots as `makePageDots`, for a page for which `canMakeDotRows`, a few rows at
/// a time.
/// @param rows how many rows of dots are wanted, from the top: 1 to `page.height`. A classic method
///   leaves the others out, since no error goes up.
/// @param cancel as for `makePageDots`; not all rows are finished once it is cancelled.
/// Out of memory: calls the new-handler, or throws std::bad_alloc.
void makeDotRows(const DotOptions& options, const GreyPage& page, std::uint32_t rows,
                 const DotRing& ring, CancelCheck cancel);

}  // namespace wren::printer
