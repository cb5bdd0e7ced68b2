// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/level_rows.h"

#include <algorithm>

#include "dither/row_kernels.h"

namespace wren::dither {

namespace {

// The shift, if the tone curve is one. Read at the end of the table that a shift does not
// clamp.
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

LevelRows::LevelRows(const Page& page)
    : page_(page),
      isShift_(page.tone != nullptr && isPlainShift(page.tone, shiftOf(page.tone))),
      shift_(isShift_ ? shiftOf(page.tone) : 0) {}

std::uint8_t* LevelRows::dots(std::size_t y) const {
  const std::size_t place = page_.dotRows == 0 ? y : y % page_.dotRows;
  return page_.dots + static_cast<std::ptrdiff_t>(place) * page_.dotStrideBytes;
}

// Brightness without contrast is a shift, which vectors can do; a table lookup is not.
// `to` may be `from`.
void LevelRows::applyTone(const std::uint8_t* from, std::uint8_t* to) const {
  const std::size_t width = page_.width;
  if (isShift_) {
    shiftRow(from, width, shift_, to);
    return;
  }
  const std::uint8_t* tone = page_.tone;
  for (std::size_t x = 0; x < width; ++x) to[x] = tone[from[x]];
}

const std::uint8_t* LevelRows::source(std::size_t y) const {
  return page_.levels + static_cast<std::ptrdiff_t>(y) * page_.levelStrideBytes;
}

std::uint8_t* LevelRows::levelsInPlace(std::size_t y) const {
  const std::uint8_t* from = source(y);
  std::uint8_t* to = dots(y);
  if (page_.mirrored) {
    reverseRow(from, page_.width, to);
    from = to;
  }
  if (page_.tone != nullptr) {
    applyTone(from, to);
  } else if (from != to) {
    std::copy_n(from, page_.width, to);
  }
  return to;
}

void LevelRows::prefetch(std::size_t y) const {
  constexpr std::size_t kCacheLineBytes = 64;
  if (y >= page_.height) return;
  const std::uint8_t* row = source(y);
  for (std::size_t x = 0; x < page_.width; x += kCacheLineBytes) __builtin_prefetch(row + x);
}

const std::uint8_t* LevelRows::levels(std::size_t y) const {
  return page_.tone != nullptr || page_.mirrored ? levelsInPlace(y) : source(y);
}

}  // namespace wren::dither
