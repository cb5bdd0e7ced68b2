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

/// One lane: its current row and the column of its next step.
class Lane {
 public:
  Lane() = default;

  /// A lane before the start of its first row, which is row `number`.
  Lane(const LevelRows& rows, std::size_t number, const Skew& skew)
      : row_(rows, number), x_(-static_cast<std::ptrdiff_t>(number * skew.lag)) {}

  /// Whether all steps of the tile are pixels of one row.
  bool isInsideRow() const { return static_cast<std::size_t>(x_) < row_.insideEnd; }

  /// The tile's pixels in a lane that is inside its row.
  std::uint8_t* pixels() const { return row_.pixels + x_; }

  /// Moves a lane that is inside its row to the next tile.
  void advanceInsideRow() { x_ += kStep; }

  /// Prepares the levels of the lane's next row if the tile reaches it. For a lane that is
  /// not inside its row; call it before `segments`.
  void openNextRow(const LevelRows& rows, const Skew& skew) {
    if (reachesNextRow(skew)) next_ = OpenRow(rows, row_.y + skew.lanes);
  }

  /// The tile's pixels: the end of the lane's row, and the start of its next row. An empty
  /// segment has step 0 or `kTileSteps`.
  std::array<Segment, 2> segments(std::size_t width, const Skew& skew) const {
    const auto nextStart = static_cast<std::ptrdiff_t>(skew.period) - x_;
    return {{segmentOf(row_, -x_, width, 0), segmentOf(next_, nextStart, width, kTileSteps)}};
  }

  /// Moves any lane to the next tile.
  void advance(const Skew& skew) {
    if (reachesNextRow(skew)) {
      row_ = next_;
      x_ -= static_cast<std::ptrdiff_t>(skew.period);
    }
    x_ += kStep;
  }

 private:
  static constexpr auto kStep = static_cast<std::ptrdiff_t>(kTileSteps);

  // A row with its levels in place. Beyond the last row of the page it has no pixels.
  struct OpenRow {
    OpenRow() = default;
    OpenRow(const LevelRows& rows, std::size_t number) : y(number) {
      if (y >= rows.height()) return;
      pixels = rows.levelsInPlace(y);
      insideEnd = rows.width() < kTileSteps ? 0 : rows.width() - kTileSteps + 1;
    }

    std::size_t y = 0;
    std::uint8_t* pixels = nullptr;
    std::size_t insideEnd = 0;  // first column at which a tile no longer fits
  };

  // What the tile has of a row whose first pixel is at step `start`.
  static Segment segmentOf(const OpenRow& row, std::ptrdiff_t start, std::size_t width,
                           std::size_t stepIfEmpty) {
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(start, 0);
    const std::ptrdiff_t end = std::min(start + static_cast<std::ptrdiff_t>(width), kStep);
    if (row.pixels == nullptr || first >= end) return {nullptr, stepIfEmpty, 0};
    return {row.pixels + (first - start), static_cast<std::size_t>(first),
            static_cast<std::size_t>(end - first)};
  }

  bool reachesNextRow(const Skew& skew) const {
    return x_ + kStep >= static_cast<std::ptrdiff_t>(skew.period);
  }

  OpenRow row_;
  OpenRow next_;
  std::ptrdiff_t x_ = 0;  // negative before the start of the row
};

}  // namespace wren::dither
