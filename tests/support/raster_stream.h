// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes CUPS raster streams byte by byte, with whatever a header says, so that headers
// which the CUPS library would refuse to write can be fed to the filter. The layout is
// that of the published CUPS raster format (versions 2 and 3) and of PWG 5102.4.
#pragma once

#include <cups/raster.h>

#include <string>
#include <vector>

namespace wren_test {

enum class RasterKind {
  kV2,         ///< compressed, byte order of this machine
  kV3,         ///< not compressed, byte order of this machine
  kV3Swapped,  ///< not compressed, the other byte order
  kPwg,        ///< compressed, big-endian
};

struct RasterPage {
  cups_page_header2_t header;
  std::string pixels;  ///< cupsHeight rows of cupsBytesPerLine bytes; fewer cut the stream
};

/// An 8-bit K page of width x height at dpi, one copy.
cups_page_header2_t greyHeader(unsigned width, unsigned height, unsigned dpi = 203);

/// A page whose pixels are given as rows of equal length.
RasterPage greyPage(const std::vector<std::string>& rows, unsigned dpi = 203);

/// A page of width x height filled with one level.
RasterPage flatPage(unsigned width, unsigned height, unsigned char level, unsigned dpi = 203);

/// A page of noise, the same for the same seed.
RasterPage noisePage(unsigned width, unsigned height, unsigned seed, unsigned dpi = 203);

/// The 4 bytes that start a stream.
std::string rasterSync(RasterKind kind);

/// The bytes of one page, header and pixels.
std::string rasterPage(RasterKind kind, const RasterPage& page);

/// A whole stream.
std::string rasterStream(RasterKind kind, const std::vector<RasterPage>& pages);

/// Whether the installed CUPS library passes this page on as its header says. Newer
/// versions refuse lines that are longer than the width asks for.
bool cupsPassesOn(const RasterPage& page);

}  // namespace wren_test
