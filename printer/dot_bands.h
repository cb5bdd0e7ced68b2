// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A page of dots as a printer takes it: one bit per dot, in bands of 8 rows with one byte per
// column. An eighth of a page of bytes, so it stays in cache where that does not.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/finished_rows.h"
#include "printer/page_memory.h"

namespace wren::printer {

inline constexpr std::size_t kRowsPerBand = 8;

/// The bands of a page. The memory is kept from page to page.
class DotBands {
 public:
  /// Makes room for a page; the dots are undefined. False if out of memory.
  bool resize(std::size_t width, std::size_t rows) {
    width_ = width;
    rows_ = rows;
    return memory_.resize(width * bandCount());
  }

  std::size_t width() const { return width_; }
  std::size_t rows() const { return rows_; }
  std::size_t bandCount() const { return (rows_ + kRowsPerBand - 1) / kRowsPerBand; }

  /// Rows of band `index`: 8, or fewer in the last band.
  std::size_t rowsOfBand(std::size_t index) const {
    return std::min(kRowsPerBand, rows_ - index * kRowsPerBand);
  }

  /// The `width` columns of band `index`, the top row in bit 7.
  std::uint8_t* band(std::size_t index) { return memory_.data() + index * width_; }
  const std::uint8_t* band(std::size_t index) const { return memory_.data() + index * width_; }

 private:
  PageMemory memory_;
  std::size_t width_ = 0;
  std::size_t rows_ = 0;
};

/// Packs finished rows of dots (bytes, 0 or not 0) from a ring of rows into bands. Nothing is
/// owned.
class BandPacker {
 public:
  /// @param ring `ringRows` rows of `bands.width()` bytes; row y of the page is in place
  ///   y % `ringRows`.
  /// @param first row of the page with which the bands begin.
  BandPacker(const std::uint8_t* ring, std::size_t ringRows, std::size_t first, DotBands& bands)
      : ring_(ring), ringRows_(ringRows), first_(first), bands_(bands) {}

  /// Packs the bands that are complete with the first `rows` rows of the page.
  void take(std::size_t rows);

  FinishedRows finishedRows() {
    return {[](void* self, std::size_t rows) { static_cast<BandPacker*>(self)->take(rows); }, this};
  }

 private:
  const std::uint8_t* ring_;
  std::size_t ringRows_;
  std::size_t first_;
  DotBands& bands_;
  std::size_t packed_ = 0;  // bands
};

}  // namespace wren::printer
