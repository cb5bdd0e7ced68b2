// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// From grey levels to 1 bit per pixel. The kernels work in the source image's
// own pixels, which are given up in the end anyway.

#include <cstring>

#include "bitmap/cximage.h"
#include "dither/dither_page.h"
#include "dither/methods.h"

namespace {

bool isDiffusion(std::int64_t method) {
  switch (ditherMethodOf(method)) {
    case DitherMethod::kThreshold:
    case DitherMethod::kOrdered:
    case DitherMethod::kBayer:
      return false;
    default:
      return true;
  }
}

// Eight bytes of 0 or 255 make one byte, the first in the highest bit.
std::uint8_t packedByte(const std::uint8_t* dots, std::size_t count) {
  unsigned bits = 0;
  for (std::size_t i = 0; i < count; ++i) bits |= (dots[i] & 0x80u) >> i;
  return static_cast<std::uint8_t>(bits);
}

void packRow(const std::uint8_t* dots, std::size_t width, std::uint8_t* bits) {
  std::size_t x = 0;
  for (; x + 8 <= width; x += 8) bits[x / 8] = packedByte(dots + x, 8);
  if (x < width) bits[x / 8] = packedByte(dots + x, width - x);
}

// The cell of a method that compares.
ThresholdCell cellOf(std::int64_t method) {
  switch (ditherMethodOf(method)) {
    case DitherMethod::kOrdered:
      return orderedCell();
    case DitherMethod::kBayer:
      return bayerCell();
    default:
      return fixedThresholdCell();
  }
}

}  // namespace

// This image has 1 bit per pixel and the size of `source`, whose pixels are lost.
bool CxImage::drawDotsOfBytes(std::int64_t method, CxImage& source) {
  DitherPage page;
  page.levels = source.info.bits;
  page.levelStrideBytes = source.info.effectiveWidth;
  page.dots = source.info.bits;
  page.dotStrideBytes = source.info.effectiveWidth;
  page.width = source.columns();
  page.height = source.rows();
  if (!ditherPage(method, page, allocator_)) return false;
  for (std::size_t y = 0; y < rows(); ++y) packRow(source.row(y), columns(), row(y));
  return true;
}

// Levels of 4 bits stay below every diffusion's threshold, because what is
// stored back is cut to 4 bits again: only the comparisons can give white.
void CxImage::drawDotsOfNibbles(std::int64_t method, const CxImage& source) {
  std::memset(info.bits, 0, header.imageSize);
  if (isDiffusion(method)) return;
  const ThresholdCell cell = cellOf(method);
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      const std::uint8_t threshold = cell[static_cast<std::size_t>(4 * (y & 3) + (x & 3))];
      BlindSetPixelIndex(x, y, source.BlindGetPixelIndex(x, y) > threshold);
    }
  }
}

bool CxImage::drawDots(std::int64_t method, CxImage& source) {
  switch (source.header.bitsPerPixel) {
    case 8:
      return drawDotsOfBytes(method, source);
    case 4:
      drawDotsOfNibbles(method, source);
      return true;
    default:  // 24 bits per pixel have no indexes: all levels read as 0
      std::memset(info.bits, 0, header.imageSize);
      return true;
  }
}

bool CxImage::Dither(std::int64_t method) {
  if (!dib) return false;
  if (header.bitsPerPixel == 1) return true;
  CxImage dots(allocator_);
  dots.makeSimilar(*this, static_cast<std::uint32_t>(header.width), 1);
  if (!dots.IsValid()) {
    setLastError(dots.GetLastError());
    return false;
  }
  if (!dots.drawDots(method, *this)) {
    setLastError(kNoMemory);
    return false;
  }
  dots.SetPaletteColor(0, 0, 0, 0, 0);
  dots.SetPaletteColor(1, 255, 255, 255, 0);
  return Transfer(dots);
}
