// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whole-image operations of a `CxImage`, row by row. Those that change the geometry or the
// depth fill a temporary image and transfer it over the old one.

#include <algorithm>
#include <array>

#include "bitmap/cximage.h"
#include "dither/tone_table.h"

namespace {

// Lookup table for whole bytes of packed pixels, from the table for palette indexes.
std::array<std::uint8_t, 256> byteTable(const std::uint8_t* table, int depth) {
  const int mask = (1 << depth) - 1;
  std::array<std::uint8_t, 256> bytes = {};
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

// Creates this image with the height, image type and palette of `source`.
void CxImage::makeSimilar(const CxImage& source, std::uint32_t width, std::uint32_t depth) {
  CopyInfo(source);
  Create(width, static_cast<std::uint32_t>(source.header.height), depth, source.info.imageType);
  SetPalette(source.GetPalette(), source.GetNumColors());
}

bool CxImage::Rotate180(CxImage* destination) {
  if (dib == nullptr) return false;
  CxImage rotated(allocator_);
  rotated.makeSimilar(*this, static_cast<std::uint32_t>(header.width), 8);
  for (std::size_t y = 0; rotated.IsValid() && y < rows(); ++y) {
    std::uint8_t* to = rotated.row(rows() - 1 - y);
    readIndexes(y, to);
    std::reverse(to, to + columns());
  }
  (destination != nullptr ? destination : this)->Transfer(rotated);
  return true;
}

void CxImage::Mirror() {
  if (dib == nullptr) return;
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
  if (dib == nullptr || header.width >= newWidth) return;
  CxImage centered(allocator_);
  centered.makeSimilar(*this, static_cast<std::uint32_t>(newWidth), 8);
  const std::size_t offset = (static_cast<std::size_t>(newWidth) - columns()) / 2;
  for (std::size_t y = 0; centered.IsValid() && y < rows(); ++y) {
    readIndexes(y, centered.row(y) + offset);
  }
  Transfer(centered);
}

void CxImage::Negative() {
  if (dib == nullptr) return;
  std::uint8_t* end = info.bits + header.imageSize;
  for (std::uint8_t* byte = info.bits; byte != end; ++byte) *byte = ~*byte;
}

bool CxImage::Light(std::int32_t brightness, std::int32_t contrast) {
  if (dib == nullptr) return false;
  return Lut(wren::dither::makeToneTable(brightness, contrast).data());
}

bool CxImage::Lut(const std::uint8_t* table) {
  if (dib == nullptr || table == nullptr) return false;
  const std::size_t depth = header.bitsPerPixel;
  if (depth > 8) return true;
  const auto bytes = byteTable(table, static_cast<int>(depth));
  const std::size_t count = (columns() * depth + 7) / 8;
  for (std::size_t y = 0; y < rows(); ++y) {
    std::uint8_t* pixels = row(y);
    for (std::size_t i = 0; i < count; ++i) pixels[i] = bytes[pixels[i]];
  }
  return true;
}

// Both images have the same size and at most 8 bits per pixel.
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

// This image has 24 bits per pixel; `source` has the same size.
void CxImage::copyColorsOf(const CxImage& source) {
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      BlindSetPixelColor(x, y, source.BlindGetPixelColor(x, y));
    }
  }
}

bool CxImage::IncreaseBpp(std::uint32_t depth) {
  if (dib == nullptr || (depth != 4 && depth != 8 && depth != 24)) return false;
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
