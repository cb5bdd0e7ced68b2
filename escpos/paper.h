// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printed paper: its dots, and events such as cuts. Positions down the paper
// are in feed units, two per raster row; positions across it are in dots. There
// is no resolution, because the stream has none. Only printed stripes are stored,
// so blank paper needs no memory.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wren::escpos {

inline constexpr std::uint32_t kUnitsPerRow = 2;
inline constexpr std::uint32_t kBandRows = 8;

/// A printed bit image, or several at one position: `kBandRows` raster rows of dot columns.
struct Stripe {
  std::uint64_t topUnits = 0;         ///< feed units from the start of the paper
  std::uint32_t leftDots = 0;         ///< left edge of the first column
  std::uint32_t columnWidthDots = 1;  ///< 1 or 2
  std::vector<std::uint8_t> columns;  ///< from left to right; bit 7 is the top row
};

enum class MarkKind { kPage, kFullCut, kPartialCut, kDrawerPulse, kBeep };

/// An event at a position of the paper.
struct Mark {
  MarkKind kind = MarkKind::kPage;
  std::uint64_t atUnits = 0;  ///< feed units from the start of the paper
  std::uint64_t offset = 0;   ///< of the command, from the start of the stream
  unsigned first = 0;         ///< drawer: connector; beep: repeat count
  unsigned second = 0;        ///< drawer: on-time in ms; beep: on-time as sent
};

/// The raster rows from `first` up to but not including `end`.
struct RowRange {
  std::uint64_t first = 0;
  std::uint64_t end = 0;
};

struct Paper {
  std::vector<Stripe> stripes;    ///< in stream order; `topUnits` never decreases
  std::vector<Mark> marks;        ///< in stream order; `atUnits` never decreases
  std::uint64_t lengthUnits = 0;  ///< total feed, or the bottom of the lowest dot if that is more
  std::uint32_t widthDots = 0;    ///< right edge of the rightmost column

  /// All raster rows; half a row at the end counts as one.
  RowRange allRows() const { return {0, (lengthUnits + kUnitsPerRow - 1) / kUnitsPerRow}; }
};

/// Renders one raster row: dots[x] becomes 1 for a dot and 0 for blank paper. Dots beyond the end
/// of `dots` are clipped. A stripe at an odd unit is rendered from the row in which it starts.
void renderRow(const Paper& paper, std::uint64_t row, std::span<std::uint8_t> dots);

/// A range of rows with its marks.
struct Piece {
  RowRange rows;
  std::size_t firstMark = 0;  ///< index into `Paper::marks`
  std::size_t endMark = 0;    ///< index after the last mark
};

/// The whole paper as one piece.
Piece wholeStrip(const Paper& paper);

/// The paper split at every cut and at every page start, without empty pieces. A cut belongs to
/// the piece above it. If there is a piece at all, every mark belongs to exactly one.
std::vector<Piece> pieces(const Paper& paper);

}  // namespace wren::escpos
