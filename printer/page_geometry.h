// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether the page that a header announces can be printed, and how a page that is too wide
// is reduced to the printable width.

#pragma once

#include <cstdint>

namespace wren::printer {

/// What a page header announces, in pixels of one byte.
struct PageGeometry {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::uint32_t bytesPerLine = 0;
};

/// The printable width in pixels, rounded down; 0 means no limit.
/// @param maxMediaWidthPt widest media in points of 1/72 inch; a width that is 0, negative
///   or not finite, or gives more pixels than 64 bits hold, means no limit.
std::uint64_t printableWidthPx(double maxMediaWidthPt, std::uint32_t horizontalDpi);

/// The number of bytes of a row beyond the printable width.
std::uint64_t excessPx(std::uint32_t bytesPerLine, std::uint64_t printableWidthPx);

/// Why the page cannot be printed; null if it can.
/// @return a constant text.
const char* pageFault(const PageGeometry& page, std::uint64_t excessPx);

/// Moves the middle of every row to its start, so that a page that is too wide keeps its
/// centre. The last `excessPx` bytes of a row keep their values.
/// @param pixels heightPx rows of bytesPerLine bytes, changed in place.
void centrePage(std::uint8_t* pixels, const PageGeometry& page, std::uint64_t excessPx);

}  // namespace wren::printer
