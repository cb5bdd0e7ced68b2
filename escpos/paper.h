// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The paper that comes out of a receipt printer: the dots on it and what
// happened along it. Down the paper everything is counted in feed units, two
// to a raster row; across it in dots. The stream of a printer carries no
// resolution, so none is known here. It is a record, not a picture: blank
// paper costs nothing.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace escpos {

inline constexpr std::uint32_t kUnitsPerRow = 2;
inline constexpr std::uint32_t kBandRows = 8;

/// One printed bit image: eight raster rows of dot columns.
struct Stripe {
  std::uint64_t topUnits = 0;         ///< feed units from the start of the paper
  std::uint32_t leftDots = 0;         ///< first dot from the left edge
  std::uint32_t columnWidthDots = 1;  ///< dots across one column: 1 or 2
  std::vector<std::uint8_t> columns;  ///< bit 7 is the top row
};

enum class MarkKind { kPage, kFullCut, kPartialCut, kDrawerPulse, kBeep };

/// Something that happened at a place on the paper.
struct Mark {
  MarkKind kind = MarkKind::kPage;
  std::uint64_t atUnits = 0;  ///< feed units from the start of the paper
  std::uint64_t offset = 0;   ///< of the command in the stream
  unsigned first = 0;         ///< drawer: connector; beep: repeat count
  unsigned second = 0;        ///< drawer: on-time in ms; beep: on-time as sent
};

/// A stretch of paper in raster rows, `first` up to but not including `end`.
struct RowRange {
  std::uint64_t first = 0;
  std::uint64_t end = 0;
};

struct Paper {
  std::vector<Stripe> stripes;    ///< in the order printed, so never upwards
  std::vector<Mark> marks;        ///< in the order of the stream, so never upwards
  std::uint64_t lengthUnits = 0;  ///< how far it was fed, or to the foot of the lowest stripe dot
  std::uint32_t widthDots = 0;    ///< right edge of the right-most column

  /// The whole length, in raster rows.
  RowRange allRows() const { return {0, (lengthUnits + kUnitsPerRow - 1) / kUnitsPerRow}; }
};

/// Draws one raster row: dots[x] becomes 1 for a dot and 0 for none. What is printed to the right
/// of `dots` is left out. A stripe that starts on an odd unit is drawn from the row it starts in.
void renderRow(const Paper& paper, std::uint64_t row, std::span<std::uint8_t> dots);

/// A stretch of the paper with what happened on it.
struct Piece {
  RowRange rows;
  std::size_t firstMark = 0;  ///< its marks are paper.marks from here
  std::size_t endMark = 0;    ///< up to but not including this one
};

/// The paper as one strip.
Piece wholeStrip(const Paper& paper);

/// The paper taken apart at every cut and at every beginning of a page, without empty pieces.
/// A cut belongs to the piece that it ends; every mark belongs to one piece if there is a piece.
std::vector<Piece> pieces(const Paper& paper);

}  // namespace escpos
