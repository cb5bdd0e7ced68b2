// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The geometry of the wavefront: how far the rows of the lanes are skewed, and which pixels
// of which row a tile of 16 steps has for each lane. A vector has one lane per byte.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "dither/level_rows.h"
#include "dither/methods.h"

namespace wren::dither {

/// Steps per tile: 16 pixels of each row are transposed at once.
inline constexpr std::size_t kTileSteps = 16;

/// `value` rounded up to a multiple of `step`.
constexpr std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

/// How the wavefront of `laneCount` rows is skewed on a page of a given width.
struct Skew {
  Skew(std::size_t width, std::size_t laneCount)
      : lanes(laneCount),
        lag(std::max(kMinLag, roundedUp(width + kMaxReachColumns - 1, lanes) / lanes)),
        period(lanes * lag + 1) {}

  /// With this lag a tile reads only error terms that an earlier tile has written.
  static constexpr std::size_t kMinLag = kTileSteps + kMaxReachColumns;

  /// Rows that are processed at once.
  std::size_t lanes;

  /// Columns by which each row is behind the row above.
  std::size_t lag;

  /// Steps from the start of a row to the start of the lane's next row, `lanes` rows below:
  /// the width, and a gap without pixels that no tap reaches across.
  std::size_t period;
};

/// The `count` pixels of a row that a tile has from step `step` on. `pixels` holds their
/// levels, which the dots replace.
struct Segment {
  std::uint8_t* pixels;
  std::size_t step;
  std::size_t count;
};

/// One lane: its current row, and the step at which that row starts.
class Lane {
 public:
  Lane() = default;

  /// A lane before its first row, which is row `number`.
  Lane(const LevelRows& rows, std::size_t number, const Skew& skew)
      : row_(rows, number), start_(static_cast<std::ptrdiff_t>(number * skew.lag)) {}

  /// Whether all steps of the tile that starts at `step` are pixels of one row.
  bool isInsideRow(std::ptrdiff_t step) const {
    return static_cast<std::size_t>(step - start_) < row_.insideEnd;
  }

  /// The tile's pixels in a lane that is inside its row.
  std::uint8_t* pixels(std::ptrdiff_t step) const { return row_.pixels + (step - start_); }

  /// Prepares the levels of the lane's next row if the tile reaches it. For a lane that is
  /// not inside its row; call it before `segments`.
  void openNextRow(std::ptrdiff_t step, const LevelRows& rows, const Skew& skew) {
    if (reachesNextRow(step, skew)) next_ = OpenRow(rows, row_.y + skew.lanes);
  }

  /// The tile's pixels: the end of the lane's row, and the start of its next row. An empty
  /// segment has step 0 or `kTileSteps`.
  std::array<Segment, 2> segments(std::ptrdiff_t step, std::size_t width, const Skew& skew) const {
    const std::ptrdiff_t first = start_ - step;
    return {
        {segmentOf(row_, first, width, 0),
         segmentOf(next_, first + static_cast<std::ptrdiff_t>(skew.period), width, kTileSteps)}};
  }

  /// Goes on with the next row if the tile reached it, and reports the row that is done. For
  /// a lane that is not inside its row; call it after the tile.
  void closeRow(std::ptrdiff_t step, const LevelRows& rows, const Skew& skew) {
    if (!reachesNextRow(step, skew)) return;
    if (row_.pixels != nullptr) rows.finish(row_.y + 1);
    row_ = next_;
    start_ += static_cast<std::ptrdiff_t>(skew.period);
  }

 private:
  static constexpr std::size_t kRowsAhead = 2;

  // A row with its levels in place. Beyond the last row of the page it has no pixels.
  struct OpenRow {
    OpenRow() = default;
    OpenRow(const LevelRows& rows, std::size_t number) : y(number) {
      if (y >= rows.height()) return;
      pixels = rows.levelsInPlace(y);
      // Rows are opened in order, with long pauses in which the processor's own prefetch stops.
      rows.prefetch(y + kRowsAhead);
      insideEnd = rows.width() - kTileSteps + 1;
    }

    std::size_t y = 0;
    std::uint8_t* pixels = nullptr;
    std::size_t insideEnd = 0;  // first column at which a tile no longer fits
  };

  // What the tile has of a row whose first pixel is at step `first` of the tile.
  static Segment segmentOf(const OpenRow& row, std::ptrdiff_t first, std::size_t width,
                           std::size_t stepIfEmpty) {
    const std::ptrdiff_t from = std::max<std::ptrdiff_t>(first, 0);
    const std::ptrdiff_t end =
        std::min(first + static_cast<std::ptrdiff_t>(width), std::ptrdiff_t{kTileSteps});
    if (row.pixels == nullptr || from >= end) return {nullptr, stepIfEmpty, 0};
    return {row.pixels + (from - first), static_cast<std::size_t>(from),
            static_cast<std::size_t>(end - from)};
  }

  bool reachesNextRow(std::ptrdiff_t step, const Skew& skew) const {
    return step + std::ptrdiff_t{kTileSteps} - start_ >= static_cast<std::ptrdiff_t>(skew.period);
  }

  OpenRow row_;
  OpenRow next_;
  std::ptrdiff_t start_ = 0;
};

}  // namespace wren::dither
