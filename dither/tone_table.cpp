// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/tone_table.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace wren::dither {

namespace {

std::int32_t saturated(std::int64_t value) {
  constexpr std::int64_t kLow = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kHigh = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(value, kLow, kHigh));
}

// Truncates toward zero and clamps to a level. Compares before it converts: converting a float
// that does not fit the integer is undefined.
std::uint8_t levelOf(float value) {
  if (value <= 0.0F) return 0;
  if (value >= 255.0F) return 255;
  return static_cast<std::uint8_t>(value);
}

}  // namespace

// Single precision, one rounding per operation: another rounding changes printed output.
ToneTable makeToneTable(std::int32_t brightness, std::int32_t contrast) {
  const float scale = static_cast<float>(saturated(std::int64_t{contrast} + 100)) / 100.0F;
  const auto shift = static_cast<float>(saturated(std::int64_t{brightness} + 128));
  ToneTable table = {};
  for (int level = 0; level < 256; ++level) {
    const float scaled = static_cast<float>(level - 128) * scale;
    const float shifted = scaled + shift;
    table[static_cast<std::size_t>(level)] = levelOf(shifted + 0.5F);
  }
  return table;
}

}  // namespace wren::dither
