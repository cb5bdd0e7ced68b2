// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The debug images: uncompressed BMP files of a page as received (8-bit grey) and of its dots
// (1 bit). The layout is that of the published BMP format, except that the rows of the 8-bit
// image are stored as they are in memory: top row first and not padded, whatever the
// header declares.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "printer/dot_bands.h"
#include "printer/page_memory.h"

namespace wren::printer {

/// A page to save: `height` rows, `bytesPerLine` apart, one byte per pixel; not owned.
struct ImageSource {
  const std::uint8_t* data = nullptr;
  unsigned long bytesPerLine = 0;
  unsigned long height = 0;
  unsigned long width = 0;
};

constexpr std::size_t kBmpHeaderBytes = 54;

/// The bytes of a BMP row, padded to four.
std::int32_t bmpRowBytes(unsigned long width, unsigned short bitsPerPixel);

/// The 54-byte header; every depth but 8 is declared as 1 bit per pixel.
std::array<std::uint8_t, kBmpHeaderBytes> bmpHeader(unsigned long width, unsigned long height,
                                                    unsigned short bitsPerPixel);

/// Writes the image into an open file, in one write if the kernel takes it whole. Write errors,
/// such as a full disk, stop the writing without a message.
/// @param rows memory for the rows of a 1-bit image, kept from page to page; its old content
///   is lost. If it cannot grow, the rows are written one at a time.
void writeImage(int descriptor, const ImageSource& source, unsigned short bitsPerPixel,
                PageMemory& rows);

/// Writes a page of packed dots as the 1-bit image that `writeImage` writes for the same dots.
void writeBandImage(int descriptor, const DotBands& bands, PageMemory& rows);

}  // namespace wren::printer
