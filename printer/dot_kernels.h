// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The inner loops that turn dots (bytes, 0 or not 0) into bits: the columns of a
// band for the printer and the rows of the 1-bit debug image. Each exists twice: the plain
// loop says what is meant, the other one does the same for many pixels at once,
// and the tests hold them equal.
#pragma once

#include <cstddef>

/// Packs the columns of a band: bit 7 of columns[x] is the dot of its top row, and
/// rows that a band of fewer than 8 lacks give 0.
/// @param band rows of at least count bytes, stride bytes apart.
/// @param rows 0 to 8.
/// @param columns count bytes, all written; must not overlap the band.
void packColumns(const unsigned char* band, unsigned rows, std::size_t stride,
                 unsigned char* columns, std::size_t count);
void packColumnsPlain(const unsigned char* band, unsigned rows, std::size_t stride,
                      unsigned char* columns, std::size_t count);

/// Packs a row of pixels into bits, first pixel in bit 7: 0 (black) for a dot, 1
/// (white) for none, and 1 in the unused bits of the last byte.
/// @param bits (count + 7) / 8 bytes, all written; must not overlap the pixels.
void packWhiteBits(const unsigned char* pixels, std::size_t count, unsigned char* bits);
void packWhiteBitsPlain(const unsigned char* pixels, std::size_t count, unsigned char* bits);
