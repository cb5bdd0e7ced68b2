// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the stencil method writes its dots: a page, or a ring of rows that are taken while the
// page is halftoned.

#pragma once

#include <cstddef>
#include <cstdint>

#include "common/finished_rows.h"

namespace wren::stencil {

/// Rows of dots, not owned.
struct StencilDots {
  /// The least size of a ring: two blocks of rows in work, and 8 rows for a caller that takes
  /// them in bands, rounded up to whole blocks.
  static constexpr int kMinRingRows = 48;

  std::uint8_t* rows = nullptr;  ///< The first row.
  std::ptrdiff_t strideBytes = 0;
  int ringRows = 0;            ///< Rows in the ring, a multiple of 16; 0 for a whole page.
  FinishedRows finished = {};  ///< Hears of finished rows, from the top of the page down.

  std::uint8_t* row(int y) const { return rows + (ringRows == 0 ? y : y % ringRows) * strideBytes; }
};

}  // namespace wren::stencil
