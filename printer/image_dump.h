// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The debug images: uncompressed BMP files of a page as received (8-bit grey) and
// of its dots (1 bit). The layout is that of the published BMP format, except that
// the 8-bit image keeps its rows as they lie in memory: top row first and not
// padded, whatever its header declares.
#pragma once

#include <array>
#include <cstdint>

#include "printer/page_memory.h"

/// A page to dump: height rows, bytesPerLine apart, one byte per pixel; not owned.
struct DumpSource {
  const unsigned char* data = nullptr;
  unsigned long bytesPerLine = 0;
  unsigned long height = 0;
  unsigned long width = 0;
};

constexpr std::size_t kBmpHeaderBytes = 54;

/// The bytes of a BMP row, padded to four.
std::int32_t bmpRowBytes(unsigned long width, unsigned short bitsPerPixel);

/// The 54-byte header; every depth but 8 is declared as 1 bit per pixel.
std::array<unsigned char, kBmpHeaderBytes> bmpHeader(unsigned long width, unsigned long height,
                                                     unsigned short bitsPerPixel);

/// Packs a row of count pixels into bits: 1 (white) for a pixel of 0, 0 (black) for a
/// dot, the unused low bits of the last byte 1. The rest of the row becomes 0.
/// @param row rowBytes bytes; pixels that do not fit are left out.
void packDumpRow(const unsigned char* pixels, unsigned long count, unsigned char* row,
                 std::size_t rowBytes);

/// Writes the image into an open file, in one write where the system takes it whole.
/// Errors, a full disk among them, end the writing and are not reported.
/// @param rows memory for the rows of a 1-bit image, kept from page to page; what was
///   in it before is lost.
void writeDump(int descriptor, const DumpSource& source, unsigned short bitsPerPixel,
               PageMemory& rows);
