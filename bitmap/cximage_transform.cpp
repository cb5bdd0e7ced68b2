// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Operations on whole images, row by row. Those that change the geometry or the
// depth fill a temporary image and move it over the old one.

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "bitmap/cximage.h"

namespace {

std::int32_t saturated(std::int64_t value) {
  constexpr std::int64_t kLow = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kHigh = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(value, kLow, kHigh));
}

// Truncates toward zero and clamps to a level. The comparisons come first: a
// float beyond the range of an integer has no conversion.
std::uint8_t levelOf(float value) {
  if (value <= 0.0f) return 0;
  if (value >= 255.0f) return 255;
  return static_cast<std::uint8_t>(value);
}

using Table = std::array<std::uint8_t, 256>;

// Maps whole bytes of packed pixels as `table` maps their indexes.
Table byteTable(const std::uint8_t* table, int depth) {
  const int mask = (1 << depth) - 1;
  Table bytes = {};
  for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
    unsigned mapped = 0;
    for (int shift = 0; shift < 8; shift += depth) {
      const std::size_t index = (byte >> shift) & mask;
      mapped |= static_cast<unsigned>(table[index] & mask) << shift;
    }
    bytes[byte] = static_cast<std::uint8_t>(mapped);
  }
  return bytes;
}

}  // namespace

// Makes this image a new one of the height, image type and palette of `source`.
void CxImage::makeSimilar(const CxImage& source, std::uint32_t width, std::uint32_t depth) {
  CopyInfo(source);
  Create(width, static_cast<std::uint32_t>(source.header.height), depth, source.info.imageType);
  SetPalette(source.GetPalette(), source.GetNumColors());
}

// Writes one byte per pixel: the palette index, 0 at 24 bits per pixel.
void CxImage::readIndexes(std::size_t y, std::uint8_t* indexes) const {
  const std::uint8_t* pixels = row(y);
  const std::size_t count = columns();
  switch (header.bitsPerPixel) {
    case 8:
      std::memcpy(indexes, pixels, count);
      break;
    case 4:
      for (std::size_t x = 0; x < count; ++x) {
        indexes[x] = (pixels[x >> 1] >> ((x & 1) != 0 ? 0 : 4)) & 15;
      }
      break;
    case 1:
      for (std::size_t x = 0; x < count; ++x) indexes[x] = (pixels[x >> 3] >> (7 - (x & 7))) & 1;
      break;
    default:
      std::memset(indexes, 0, count);
      break;
  }
}

bool CxImage::Rotate180(CxImage* destination) {
  if (!dib) return false;
  CxImage turned(allocator_);
  turned.makeSimilar(*this, static_cast<std::uint32_t>(header.width), 8);
  for (std::size_t y = 0; turned.IsValid() && y < rows(); ++y) {
    std::uint8_t* to = turned.row(rows() - 1 - y);
    readIndexes(y, to);
    std::reverse(to, to + columns());
  }
  (destination ? destination : this)->Transfer(turned);
  return true;
}

void CxImage::Mirror() {
  if (!dib) return;
  CxImage mirrored(allocator_);
  mirrored.makeSimilar(*this, static_cast<std::uint32_t>(header.width), 8);
  for (std::size_t y = 0; mirrored.IsValid() && y < rows(); ++y) {
    std::uint8_t* to = mirrored.row(y);
    readIndexes(y, to);
    std::reverse(to, to + columns());
  }
  Transfer(mirrored);
}

void CxImage::MakeCenter(std::int32_t newWidth) {
  if (!dib || header.width >= newWidth) return;
  CxImage centered(allocator_);
  centered.makeSimilar(*this, static_cast<std::uint32_t>(newWidth), 8);
  const std::size_t offset = (static_cast<std::size_t>(newWidth) - columns()) / 2;
  for (std::size_t y = 0; centered.IsValid() && y < rows(); ++y) {
    readIndexes(y, centered.row(y) + offset);
  }
  Transfer(centered);
}

void CxImage::Negative() {
  if (!dib) return;
  std::uint8_t* end = info.bits + header.imageSize;
  for (std::uint8_t* byte = info.bits; byte != end; ++byte) *byte = ~*byte;
}

bool CxImage::Light(std::int32_t brightness, std::int32_t contrast) {
  if (!dib) return false;
  const float scale = static_cast<float>(saturated(std::int64_t{contrast} + 100)) / 100.0f;
  const auto shift = static_cast<float>(saturated(std::int64_t{brightness} + 128));
  Table table = {};
  for (int i = 0; i < 256; ++i) {
    table[static_cast<std::size_t>(i)] =
        levelOf(static_cast<float>(i - 128) * scale + shift + 0.5f);
  }
  return Lut(table.data());
}

bool CxImage::Lut(const std::uint8_t* table) {
  if (!dib || !table) return false;
  const std::size_t depth = header.bitsPerPixel;
  if (depth > 8) return true;
  const Table bytes = byteTable(table, static_cast<int>(depth));
  const std::size_t count = (columns() * depth + 7) / 8;
  for (std::size_t y = 0; y < rows(); ++y) {
    std::uint8_t* pixels = row(y);
    for (std::size_t i = 0; i < count; ++i) pixels[i] = bytes[pixels[i]];
  }
  return true;
}

// Both images have the same size and depths of at most 8 bits.
void CxImage::copyIndexesOf(const CxImage& source) {
  for (std::size_t y = 0; y < rows(); ++y) {
    if (header.bitsPerPixel == 8) {
      source.readIndexes(y, row(y));
      continue;
    }
    const auto line = static_cast<std::int64_t>(y);
    for (std::int64_t x = 0; x < header.width; ++x) {
      BlindSetPixelIndex(x, line, source.BlindGetPixelIndex(x, line));
    }
  }
}

// This image has 24 bits per pixel, `source` has the same size.
void CxImage::copyColorsOf(const CxImage& source) {
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      BlindSetPixelColor(x, y, source.BlindGetPixelColor(x, y));
    }
  }
}

bool CxImage::IncreaseBpp(std::uint32_t depth) {
  if (!dib || (depth != 4 && depth != 8 && depth != 24)) return false;
  if (header.bitsPerPixel == depth) return true;
  if (header.bitsPerPixel > depth) return false;
  CxImage deeper(allocator_);
  deeper.makeSimilar(*this, static_cast<std::uint32_t>(header.width), depth);
  if (!deeper.IsValid()) {
    setLastError(deeper.GetLastError());
    return false;
  }
  if (depth == 24) {
    deeper.copyColorsOf(*this);
  } else {
    deeper.copyIndexesOf(*this);
  }
  return Transfer(deeper);
}
