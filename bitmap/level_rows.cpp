// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bitmap/level_rows.h"

#include <algorithm>

namespace {

// How far a tone moves the levels if it is a plain shift: seen at the level
// that is farthest from being clamped.
int shiftOf(const std::uint8_t* tone) {
  return tone[0] > 0 ? tone[0] : tone[255] - 255;
}

bool isPlainShift(const std::uint8_t* tone, int shift) {
  for (int level = 0; level < 256; ++level) {
    if (tone[level] != std::clamp(level + shift, 0, 255)) return false;
  }
  return true;
}

}  // namespace

LevelRows::LevelRows(const DitherPage& page)
    : page_(page),
      isShift_(page.tone && isPlainShift(page.tone, shiftOf(page.tone))),
      shift_(isShift_ ? shiftOf(page.tone) : 0) {}

std::uint8_t* LevelRows::dots(std::size_t y) const {
  return page_.dots + static_cast<std::ptrdiff_t>(y) * page_.dotStrideBytes;
}

// Brightness without contrast is a shift, which compilers turn into vector
// code; a table look-up they cannot. The members are copied first: a compiler
// must expect that the bytes written are theirs.
void LevelRows::copyToned(const std::uint8_t* from, std::uint8_t* to) const {
  const std::size_t width = page_.width;
  const int shift = shift_;
  if (isShift_ && shift >= 0) {
    const int most = 255 - shift;
    for (std::size_t x = 0; x < width; ++x) {
      to[x] = static_cast<std::uint8_t>(std::min<int>(from[x], most) + shift);
    }
  } else if (isShift_) {
    for (std::size_t x = 0; x < width; ++x) {
      to[x] = static_cast<std::uint8_t>(std::max<int>(from[x], -shift) + shift);
    }
  } else {
    const std::uint8_t* tone = page_.tone;
    for (std::size_t x = 0; x < width; ++x) to[x] = tone[from[x]];
  }
}

const std::uint8_t* LevelRows::levels(std::size_t y) const {
  const std::uint8_t* from = page_.levels + static_cast<std::ptrdiff_t>(y) * page_.levelStrideBytes;
  if (!page_.tone && !page_.mirrored) return from;
  std::uint8_t* to = dots(y);
  if (page_.tone) {
    copyToned(from, to);
  } else {
    std::copy_n(from, page_.width, to);
  }
  if (page_.mirrored) std::reverse(to, to + page_.width);
  return to;
}
