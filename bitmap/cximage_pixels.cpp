// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pixel access of a `CxImage`: packing and unpacking of 1, 4 and 8 bits per pixel.

#include <cstring>

#include "bitmap/cximage.h"

namespace {

// Position of a 4-bit pixel inside its byte: even columns are in the high nibble.
int nibbleShift(std::int64_t x) {
  return (x & 1) != 0 ? 0 : 4;
}

// Position of a 1-bit pixel inside its byte: the leftmost is in the highest bit.
int bitShift(std::int64_t x) {
  return 7 - static_cast<int>(x & 7);
}

std::uint8_t nibbleAt(const std::uint8_t* pixels, std::int64_t x) {
  return (pixels[x >> 1] >> nibbleShift(x)) & 15;
}

std::uint8_t bitAt(const std::uint8_t* pixels, std::int64_t x) {
  return (pixels[x >> 3] >> bitShift(x)) & 1;
}

void storeBits(std::uint8_t& byte, int mask, int shift, int value) {
  byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | ((value & mask) << shift));
}

}  // namespace

bool CxImage::isInside(std::int64_t x, std::int64_t y) const {
  return x >= 0 && y >= 0 && x < header.width && y < header.height;
}

std::uint8_t CxImage::GetPixelIndex(std::int64_t x, std::int64_t y) const {
  if (dib == nullptr || header.colorsUsed == 0) return 0;
  if (!isInside(x, y)) return info.bits[0];
  return BlindGetPixelIndex(x, y);
}

void CxImage::SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index) {
  if (dib == nullptr || header.colorsUsed == 0 || !isInside(x, y)) return;
  BlindSetPixelIndex(x, y, index);
}

std::uint8_t CxImage::BlindGetPixelIndex(std::int64_t x, std::int64_t y) const {
  const std::uint8_t* pixels = row(static_cast<std::size_t>(y));
  switch (header.bitsPerPixel) {
    case 8:
      return pixels[x];
    case 4:
      return nibbleAt(pixels, x);
    case 1:
      return bitAt(pixels, x);
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

// Writes the palette indexes of a row, one per byte; all 0 at 24 bits per pixel.
void CxImage::readIndexes(std::size_t y, std::uint8_t* indexes) const {
  const std::uint8_t* pixels = row(y);
  switch (header.bitsPerPixel) {
    case 8:
      std::memcpy(indexes, pixels, columns());
      break;
    case 4:
      for (std::int64_t x = 0; x < header.width; ++x) indexes[x] = nibbleAt(pixels, x);
      break;
    case 1:
      for (std::int64_t x = 0; x < header.width; ++x) indexes[x] = bitAt(pixels, x);
      break;
    default:
      std::memset(indexes, 0, columns());
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
