// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Scales a page or a picture, up or down, by area averaging in integers, row by row.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wren::app {

class AreaScaler {
 public:
  /// Sizes are at least 1. `to` is the scaled page, `toHeightPx` rows of `toWidthPx` levels; not
  /// owned.
  AreaScaler(unsigned fromWidthPx, unsigned fromHeightPx, unsigned toWidthPx, unsigned toHeightPx,
             std::uint8_t* to);

  /// Takes the next of `fromHeightPx` rows, `fromWidthPx` levels.
  void addRow(const std::uint8_t* levels);

 private:
  void addToSums(const std::uint8_t* levels, std::uint64_t weight);
  void finishRow();

  unsigned fromWidthPx_;
  unsigned fromHeightPx_;
  unsigned toWidthPx_;
  unsigned toHeightPx_;
  unsigned rowsTaken_ = 0;
  unsigned rowsMade_ = 0;
  std::uint8_t* to_;
  std::vector<std::uint64_t> sums_;  // one row: level x area
};

}  // namespace wren::app
