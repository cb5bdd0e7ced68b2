// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Counts how many pixels of a page have each grey level, row by row. Receipts are
// mostly runs of one level, which are counted eight pixels at a time.

#pragma once

#include <array>
#include <cstdint>

#include "stencil/tone.h"

namespace stencil {

class LevelCounter {
 public:
  /// Counts `width` more pixels. A page has no more than 2^31 - 1 in all.
  void add_row(const std::uint8_t* pixels, int width);

  GreyCounts counts() const;

 private:
  using Table = std::array<std::int32_t, 256>;

  // Neighbouring pixels often have the same level, and an increment waits for the one
  // before it in the same place; with separate tables only every second one does.
  std::array<Table, 4> tables_{};
};

}  // namespace stencil
