// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes CUPS raster streams byte by byte with any header, including those that the CUPS
// library refuses to write. Formats: CUPS raster versions 2 and 3, and PWG 5102.4.

#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wren_test {

enum class RasterKind {
  kV2,         ///< compressed, byte order of this machine
  kV3,         ///< uncompressed, byte order of this machine
  kV3Swapped,  ///< uncompressed, the other byte order
  kPwg,        ///< compressed, big-endian
};

struct RasterPage {
  cups_page_header2_t header;
  std::string pixels;  ///< cupsHeight rows of cupsBytesPerLine bytes; fewer truncate the stream
};

/// The header of a page in 8-bit K (ink levels), one copy.
cups_page_header2_t greyHeader(unsigned width, unsigned height, unsigned dpi = 203);

/// A page from rows of equal length, one byte per pixel.
RasterPage greyPage(const std::vector<std::string>& rows, unsigned dpi = 203);

/// A page of a single level.
RasterPage flatPage(unsigned width, unsigned height, std::uint8_t level, unsigned dpi = 203);

/// A page of noise, the same for the same `seed`.
RasterPage noisePage(unsigned width, unsigned height, unsigned seed, unsigned dpi = 203);

/// The synchronization word at the start of a stream: 4 bytes.
std::string rasterSync(RasterKind kind);

/// The bytes of one page: header and pixels.
std::string rasterPage(RasterKind kind, const RasterPage& page);

/// A whole stream.
std::string rasterStream(RasterKind kind, const std::vector<RasterPage>& pages);

/// Whether the installed CUPS library reads this header without change. Newer versions refuse lines
/// that are longer than the width requires.
bool cupsPassesOn(const RasterPage& page);

}  // namespace wren_test
