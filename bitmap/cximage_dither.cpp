// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Dithering of a `CxImage` to 1 bit per pixel. The dots replace the levels of the source
// image, which is released afterwards.

#include <cstring>

#include "bitmap/cximage.h"
#include "dither/dither_page.h"
#include "dither/methods.h"

namespace {

// Packs up to eight dots of 0 or 255 into one byte, the first in the highest bit.
std::uint8_t packedByte(const std::uint8_t* dots, std::size_t count) {
  unsigned bits = 0;
  for (std::size_t i = 0; i < count; ++i) bits |= (dots[i] & 0x80U) >> i;
  return static_cast<std::uint8_t>(bits);
}

void packRow(const std::uint8_t* dots, std::size_t width, std::uint8_t* bits) {
  std::size_t x = 0;
  for (; x + 8 <= width; x += 8) bits[x / 8] = packedByte(dots + x, 8);
  if (x < width) bits[x / 8] = packedByte(dots + x, width - x);
}

}  // namespace

// This image has 1 bit per pixel and the size of `source`, whose pixels are overwritten.
bool CxImage::ditherFromBytes(CxImage& source, std::int64_t method) {
  wren::dither::Page page;
  page.levels = source.info.bits;
  page.levelStrideBytes = source.info.effectiveWidth;
  page.dots = source.info.bits;
  page.dotStrideBytes = source.info.effectiveWidth;
  page.width = source.columns();
  page.height = source.rows();
  if (!wren::dither::ditherPage(method, page, allocator_)) return false;
  for (std::size_t y = 0; y < rows(); ++y) packRow(source.row(y), columns(), row(y));
  return true;
}

// With error diffusion all dots are black: levels are stored in 4 bits again and never reach
// 128. Only a threshold below 15 makes a dot white.
void CxImage::ditherFromNibbles(const CxImage& source, std::int64_t method) {
  std::memset(info.bits, 0, header.imageSize);
  const auto* thresholds = wren::dither::kMethods[wren::dither::methodIndex(method)].thresholds;
  if (thresholds == nullptr) return;
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      const std::uint8_t threshold = (*thresholds)[static_cast<std::size_t>(4 * (y & 3) + (x & 3))];
      BlindSetPixelIndex(x, y, source.BlindGetPixelIndex(x, y) > threshold);
    }
  }
}

bool CxImage::ditherFrom(CxImage& source, std::int64_t method) {
  switch (source.header.bitsPerPixel) {
    case 8:
      return ditherFromBytes(source, method);
    case 4:
      ditherFromNibbles(source, method);
      return true;
    default:  // 24 bits per pixel have no palette indexes: all levels read as 0
      std::memset(info.bits, 0, header.imageSize);
      return true;
  }
}

bool CxImage::Dither(std::int64_t method) {
  if (dib == nullptr) return false;
  if (header.bitsPerPixel == 1) return true;
  CxImage dots(allocator_);
  dots.makeSimilar(*this, static_cast<std::uint32_t>(header.width), 1);
  if (!dots.IsValid()) {
    setLastError(dots.GetLastError());
    return false;
  }
  if (!dots.ditherFrom(*this, method)) {
    setLastError(kNoMemory);
    return false;
  }
  dots.SetPaletteColor(0, 0, 0, 0, 0);
  dots.SetPaletteColor(1, 255, 255, 255, 0);
  return Transfer(dots);
}
