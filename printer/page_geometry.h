// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether the page that a header announces can be printed, and how an over-wide
// page is brought to the printable width.
#pragma once

#include <cstdint>

/// What a page header announces, in pixels of one byte.
struct PageGeometry {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::uint32_t bytesPerLine = 0;
};

/// The printable width in pixels, rounded down; 0 means no limit.
/// @param maxMediaWidthPt widest media in points of 1/72 inch; 0, a negative or not
///   finite width, or one too large to count pixels with, means no limit.
std::uint64_t printableWidthPx(double maxMediaWidthPt, std::uint32_t horizontalDpi);

/// How many bytes of a row lie beyond the printable width.
std::uint64_t excessPx(std::uint32_t bytesPerLine, std::uint64_t printableWidthPx);

/// Says what is wrong with a page that would leave a buffer; null when it is fine.
/// @return a constant text.
const char* pageFault(const PageGeometry& page, std::uint64_t excessPx);

/// Moves the middle of every row to its start, so that an over-wide page keeps its
/// centre. The last excess bytes of a row keep their values.
/// @param pixels heightPx rows of bytesPerLine bytes, changed in place.
void centrePage(unsigned char* pixels, const PageGeometry& page, std::uint64_t excessPx);
