// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Blank stretches inside a page: programs that think in sheets send long ones.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wren::app {

/// Shortens each stretch of blank rows (all levels 0) between rows with content to `longestRows`.
/// Blank rows above the first and below the last row with content stay.
/// @param levels `heightPx` rows of `widthPx` bytes; shortened in place.
/// @return the new number of rows.
unsigned shortenBlankGaps(std::vector<std::uint8_t>& levels, unsigned widthPx, unsigned heightPx,
                          unsigned longestRows);

}  // namespace wren::app
