// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Tells whether neighbouring pixels all have the same grey level, eight at a time.
// Where they do, the stencil skips most of its work.

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace wren::stencil {

/// Reads pixels[0 .. 8) as one number.
inline std::uint64_t eightPixels(const std::uint8_t* pixels) {
  std::uint64_t bytes;
  std::memcpy(&bytes, pixels, sizeof bytes);
  return bytes;
}

/// True when pixels[0 .. 8) are equal: rotating them by one pixel changes nothing.
inline bool areEightEqual(const std::uint8_t* pixels) {
  const std::uint64_t bytes = eightPixels(pixels);
  return bytes == std::rotl(bytes, 8);
}

/// True when pixels[0 .. 16) are equal.
inline bool areSixteenEqual(const std::uint8_t* pixels) {
  return eightPixels(pixels) == eightPixels(pixels + 8) && areEightEqual(pixels);
}

}  // namespace wren::stencil
