// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Finds out whether neighbouring pixels are all alike, eight at a time. Whole
// stages of the stencil have nothing to compute where they are.

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace stencil {

inline std::uint64_t eight_bytes(const std::uint8_t* pixels) {
  std::uint64_t bytes;
  std::memcpy(&bytes, pixels, sizeof bytes);
  return bytes;
}

/// True when pixels[0 .. 8) have the same level: turning them by one changes nothing.
inline bool are_eight_equal(const std::uint8_t* pixels) {
  const std::uint64_t bytes = eight_bytes(pixels);
  return bytes == std::rotl(bytes, 8);
}

/// The same for pixels[0 .. 16).
inline bool are_sixteen_equal(const std::uint8_t* pixels) {
  return eight_bytes(pixels) == eight_bytes(pixels + 8) && are_eight_equal(pixels);
}

}  // namespace stencil
