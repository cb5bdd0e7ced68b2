// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The histogram of a page, built row by row. Receipts are mostly runs of one grey
// level, which are counted eight pixels at a time.

#pragma once

#include <array>
#include <cstdint>

namespace wren::stencil {

/// Number of pixels of each grey level.
using Histogram = std::array<std::int32_t, 256>;

class HistogramBuilder {
 public:
  /// Counts `count` more pixels. All calls together count at most 2^31 - 1.
  void add(const std::uint8_t* pixels, int count);

  Histogram histogram() const;

 private:
  // Neighbouring pixels often have the same level, and an increment has to wait for
  // the one before it at the same address. Several tables keep most of them apart.
  std::array<Histogram, 4> tables_{};
};

}  // namespace wren::stencil
