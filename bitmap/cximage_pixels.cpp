// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Access to single pixels.

#include "bitmap/cximage.h"

namespace {

// How far a pixel of 4 bits is shifted inside its byte.
int nibbleShift(std::int64_t x) {
  return (x & 1) != 0 ? 0 : 4;
}

// How far a pixel of 1 bit is shifted inside its byte.
int bitShift(std::int64_t x) {
  return 7 - static_cast<int>(x & 7);
}

void storeBits(std::uint8_t& byte, int mask, int shift, int value) {
  byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | ((value & mask) << shift));
}

}  // namespace

bool CxImage::isInside(std::int64_t x, std::int64_t y) const {
  return x >= 0 && y >= 0 && x < header.width && y < header.height;
}

std::uint8_t CxImage::GetPixelIndex(std::int64_t x, std::int64_t y) const {
  if (!dib || header.colorsUsed == 0) return 0;
  if (!isInside(x, y)) return info.bits[0];
  return BlindGetPixelIndex(x, y);
}

void CxImage::SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index) {
  if (!dib || header.colorsUsed == 0 || !isInside(x, y)) return;
  BlindSetPixelIndex(x, y, index);
}

std::uint8_t CxImage::BlindGetPixelIndex(std::int64_t x, std::int64_t y) const {
  const std::uint8_t* pixels = row(static_cast<std::size_t>(y));
  switch (header.bitsPerPixel) {
    case 8:
      return pixels[x];
    case 4:
      return (pixels[x >> 1] >> nibbleShift(x)) & 15;
    case 1:
      return (pixels[x >> 3] >> bitShift(x)) & 1;
    default:
      return 0;
  }
}

void CxImage::BlindSetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index) {
  std::uint8_t* pixels = row(static_cast<std::size_t>(y));
  switch (header.bitsPerPixel) {
    case 8:
      pixels[x] = index;
      break;
    case 4:
      storeBits(pixels[x >> 1], 15, nibbleShift(x), index);
      break;
    case 1:
      storeBits(pixels[x >> 3], 1, bitShift(x), index);
      break;
    default:
      break;
  }
}

tagRGBQUAD CxImage::BlindGetPixelColor(std::int64_t x, std::int64_t y, bool /*getAlpha*/) const {
  if (header.colorsUsed != 0) return GetPaletteColor(BlindGetPixelIndex(x, y));
  const std::uint8_t* pixel = row(static_cast<std::size_t>(y)) + 3 * x;
  return {pixel[0], pixel[1], pixel[2], 0};
}

void CxImage::BlindSetPixelColor(std::int64_t x, std::int64_t y, tagRGBQUAD color,
                                 bool /*setAlpha*/) {
  if (header.colorsUsed != 0) {
    BlindSetPixelIndex(x, y, GetNearestIndex(color));
    return;
  }
  std::uint8_t* pixel = row(static_cast<std::size_t>(y)) + 3 * x;
  pixel[0] = color.blue;
  pixel[1] = color.green;
  pixel[2] = color.red;
}
