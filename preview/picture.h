// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A grey picture in memory. It has a byte per pixel; a whole roll of paper is
// drawn row by row instead (paper_picture.h).

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wren::preview {

inline constexpr std::uint8_t kBlackLevel = 0;
inline constexpr std::uint8_t kWhiteLevel = 255;

struct Picture {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::vector<std::uint8_t> pixels;  ///< grey levels, rows from top to bottom without padding

  /// A white picture.
  static Picture white(std::uint32_t widthPx, std::uint32_t heightPx);

  std::uint8_t* row(std::uint32_t y) { return pixels.data() + std::size_t{y} * widthPx; }
  const std::uint8_t* row(std::uint32_t y) const {
    return pixels.data() + std::size_t{y} * widthPx;
  }
};

struct Area {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
};

/// The part of `picture` in `area`; what lies outside the picture is left out.
Picture cropped(const Picture& picture, const Area& area);

/// Scales down to `widthPx` and a height in proportion, at least 1. Each pixel is the rounded mean
/// of the area that it covers (box filter). A picture that is not wider is returned unchanged.
/// @param widthPx at least 1.
Picture scaledDown(const Picture& picture, std::uint32_t widthPx);

}  // namespace wren::preview
