// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The inner loops of dither/ that work on one row at a time: thresholds, brightness and
// mirroring. Written on Highway; the scalar kernels give the same bytes.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wren::dither {

/// Four periods of a row of a threshold matrix: the threshold of column x is entry x % 16.
using RowThresholds = std::array<std::uint8_t, 16>;

/// dots[x] = 255 where levels[x] is above its threshold, else 0; XOR `flip` (0 or 255).
/// `dots` may be `levels`.
void thresholdRow(const std::uint8_t* levels, const RowThresholds& thresholds, std::uint8_t flip,
                  std::size_t width, std::uint8_t* dots);

/// to[x] = from[x] + shift, clamped to 0..255. `to` may be `from`; -255 <= shift <= 255.
void shiftRow(const std::uint8_t* from, std::size_t width, int shift, std::uint8_t* to);

/// to[x] = from[width - 1 - x]. The rows must not overlap.
void reverseRow(const std::uint8_t* from, std::size_t width, std::uint8_t* to);

}  // namespace wren::dither
