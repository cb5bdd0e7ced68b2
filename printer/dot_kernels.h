// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The inner loops that pack dots (bytes, 0 or not 0) into bits: the columns of a band for the
// printer, and the rows of the 1-bit debug image. Written on Highway; the scalar kernels give
// the same bytes.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wren::printer {

/// Where the rows of a band begin; entries beyond its last row are not read.
using BandRows = std::array<const std::uint8_t*, 8>;

/// Packs the columns of a band: bit 7 of `columns[x]` is the dot of its top row. Rows that a
/// band of fewer than 8 lacks give 0.
/// @param band rows of at least `count` bytes.
/// @param rows 0 to 8.
/// @param columns `count` bytes, all written; must not overlap the band.
void packColumns(const BandRows& band, std::size_t rows, std::uint8_t* columns, std::size_t count);

/// Packs a row of pixels into bits, first pixel in bit 7: 0 (black) for a dot, 1 (white) for
/// none, and 1 in the unused bits of the last byte.
/// @param bits (count + 7) / 8 bytes, all written; must not overlap the pixels.
void packWhiteBits(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits);

/// Turns the columns of a band into rows of bits as `packWhiteBits` makes them.
/// @param rows 0 to 8.
/// @param bits where to write each of `rows` rows, (count + 7) / 8 bytes each; must not overlap
///   the columns.
void unpackColumns(const std::uint8_t* columns, std::size_t count, std::size_t rows,
                   const std::array<std::uint8_t*, 8>& bits);

}  // namespace wren::printer
