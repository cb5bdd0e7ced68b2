// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the sixteen lanes of the wavefront are on the page: how far apart their
// rows are, and which pixels of which row a chunk of steps has for each.

#ifndef WREN_BITMAP_WAVEFRONT_LANES_H_
#define WREN_BITMAP_WAVEFRONT_LANES_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "dither/level_rows.h"
#include "dither/methods.h"

/// Rows that are worked on at once.
inline constexpr std::size_t kLanes = 16;

/// Steps that are done together: the levels and dots of sixteen rows and sixteen
/// columns are turned into lanes and back as one square.
inline constexpr std::size_t kChunk = 16;

/// `value` up to the next multiple of `step`.
constexpr std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

/// How the front leans on a page of a given width.
struct Slant {
  explicit Slant(std::size_t width)
      : lag(std::max(kMinLag, roundedUp(width + kMaxReachColumns - 1, kLanes) / kLanes)),
        period(kLanes * lag + 1) {}

  /// So far is a row behind the one above at least: what a chunk looks up was
  /// then made in an earlier chunk.
  static constexpr std::size_t kMinLag = kChunk + kMaxReachColumns;

  /// Columns by which a row is behind the one above.
  std::size_t lag;

  /// Steps from the start of a row to that of the next row of the same lane:
  /// the width and a gap, in which nothing is sent, at least as wide as a tap
  /// reaches.
  std::size_t period;
};

/// `count` pixels of a row, which a chunk has in its steps from `step` on: their
/// levels, in the place of which their dots are written.
struct Piece {
  std::uint8_t* pixels;
  std::size_t step;
  std::size_t count;
};

/// One lane: the row it is in, and the column of its next step.
class Lane {
 public:
  Lane() = default;

  /// A lane before the start of its first row, which is row `number`.
  Lane(const LevelRows& rows, std::size_t number, const Slant& slant)
      : row_(rows, number), x_(-static_cast<std::ptrdiff_t>(number * slant.lag)) {}

  /// Whether all steps of the chunk are pixels of one row.
  bool isInside() const { return static_cast<std::size_t>(x_) < row_.insideEnd; }

  /// The chunk's pixels in a lane that is inside.
  std::uint8_t* pixels() const { return row_.pixels + x_; }

  /// On to the next chunk, in a lane that is inside.
  void advanceInside() { x_ += kStep; }

  /// In a lane that is not inside: makes the levels of its next row if the chunk
  /// comes up to it. Call this before `pieces`.
  void openNext(const LevelRows& rows, const Slant& slant) {
    if (reachesNext(slant)) next_ = OpenRow(rows, row_.y + kLanes);
  }

  /// The pixels of the chunk: the end of the present row, the start of the next.
  /// One without pixels is at the start or at the end of the chunk.
  std::array<Piece, 2> pieces(std::size_t width, const Slant& slant) const {
    const auto nextStart = static_cast<std::ptrdiff_t>(slant.period) - x_;
    return {{pieceOf(row_, -x_, width, 0), pieceOf(next_, nextStart, width, kChunk)}};
  }

  /// On to the next chunk, in any lane.
  void advance(const Slant& slant) {
    if (reachesNext(slant)) {
      row_ = next_;
      x_ -= static_cast<std::ptrdiff_t>(slant.period);
    }
    x_ += kStep;
  }

 private:
  static constexpr auto kStep = static_cast<std::ptrdiff_t>(kChunk);

  // A row with its levels in place; beyond the last row of the page it has none.
  struct OpenRow {
    OpenRow() = default;
    OpenRow(const LevelRows& rows, std::size_t number) : y(number) {
      if (y >= rows.height()) return;
      pixels = rows.levelsInPlace(y);
      insideEnd = rows.width() < kChunk ? 0 : rows.width() - kChunk + 1;
    }

    std::size_t y = 0;
    std::uint8_t* pixels = nullptr;
    std::size_t insideEnd = 0;  // where a chunk may not start any more
  };

  // What the chunk has of a row whose first pixel is in step `start`.
  static Piece pieceOf(const OpenRow& row, std::ptrdiff_t start, std::size_t width,
                       std::size_t stepOfNone) {
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(start, 0);
    const std::ptrdiff_t end = std::min(start + static_cast<std::ptrdiff_t>(width), kStep);
    if (!row.pixels || first >= end) return {nullptr, stepOfNone, 0};
    return {row.pixels + (first - start), static_cast<std::size_t>(first),
            static_cast<std::size_t>(end - first)};
  }

  bool reachesNext(const Slant& slant) const {
    return x_ + kStep >= static_cast<std::ptrdiff_t>(slant.period);
  }

  OpenRow row_;
  OpenRow next_;
  std::ptrdiff_t x_ = 0;  // negative before the start of the row
};

#endif  // WREN_BITMAP_WAVEFRONT_LANES_H_
