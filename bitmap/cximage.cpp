// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The block of a `CxImage`: allocation, ownership and palette.

#include "bitmap/cximage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr std::uint32_t kHeaderBytes = sizeof(wren::bitmap::BitmapInfoHeader);
constexpr const char* kZeroSize = "CxImage::Create : width and height must be greater than zero";
constexpr const char* kTooLarge = "CXIMAGE_MAX_MEMORY exceeded";

std::uint32_t roundedDepth(std::uint32_t bitsPerPixel) {
  if (bitsPerPixel <= 1) return 1;
  if (bitsPerPixel <= 4) return 4;
  if (bitsPerPixel <= 8) return 8;
  return 24;
}

bool isDepth(std::uint32_t bitsPerPixel) {
  constexpr std::array<std::uint32_t, 5> kDepths = {1, 4, 8, 24, 32};
  return std::find(kDepths.begin(), kDepths.end(), bitsPerPixel) != kDepths.end();
}

std::uint32_t colorsOfDepth(std::uint32_t depth) {
  return depth == 24 ? 0 : std::uint32_t{1} << depth;
}

// Whether width * height * depth exceeds the limit, or 32 bits at any step: a product that
// wraps would allocate a small block for a large picture.
bool exceedsMemoryLimit(std::uint32_t width, std::uint32_t height, std::uint32_t depth) {
  constexpr std::uint64_t kMax32 = std::numeric_limits<std::uint32_t>::max();
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMax32 / depth) return true;
  return pixels * depth / 8 > CXIMAGE_MAX_MEMORY;
}

std::uint32_t strideBytesOf(std::uint32_t width, std::uint32_t depth) {
  return ((depth * width + 31) >> 5) << 2;
}

int squaredDistance(const tagRGBQUAD& a, const tagRGBQUAD& b) {
  const int blue = a.blue - b.blue;
  const int green = a.green - b.green;
  const int red = a.red - b.red;
  return blue * blue + green * green + red * red;
}

std::uint8_t nearestOf(const tagRGBQUAD* palette, std::uint32_t count, const tagRGBQUAD& color) {
  int best = 200000;  // larger than any distance
  std::uint32_t index = 0;
  for (std::uint32_t i = 0; i < count && best != 0; ++i) {
    const int distance = squaredDistance(palette[i], color);
    if (distance < best) {
      best = distance;
      index = i;
    }
  }
  return static_cast<std::uint8_t>(index);
}

void copyBlueGreenRed(const std::uint8_t* source, std::size_t pixels, std::uint8_t* row) {
  for (std::size_t x = 0; x < pixels; ++x) {
    row[3 * x] = source[4 * x];
    row[3 * x + 1] = source[4 * x + 1];
    row[3 * x + 2] = source[4 * x + 2];
  }
}

}  // namespace

void CxImage::setLastError(const char* text) {
  info.lastError.fill('\0');
  std::strncpy(info.lastError.data(), text, info.lastError.size() - 1);
}

void CxImage::fillHeader(std::uint32_t width, std::uint32_t height, std::uint32_t depth) {
  header.size = kHeaderBytes;
  header.width = static_cast<std::int32_t>(width);
  header.height = static_cast<std::int32_t>(height);
  header.planes = 1;
  header.bitsPerPixel = static_cast<std::uint16_t>(depth);
  header.compression = 0;
  header.imageSize = info.effectiveWidth * height;
  header.colorsUsed = colorsOfDepth(depth);
}

void* CxImage::Create(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel,
                      std::uint32_t imageType) {
  Destroy();
  if (width == 0 || height == 0) {
    setLastError(kZeroSize);
    return nullptr;
  }
  const std::uint32_t depth = roundedDepth(bitsPerPixel);
  if (exceedsMemoryLimit(width, height, depth)) {
    setLastError(kTooLarge);
    return nullptr;
  }
  info.effectiveWidth = strideBytesOf(width, depth);
  info.imageType = imageType;
  fillHeader(width, height, depth);
  // With the padding of narrow rows the block can be larger than `GetSize` can express.
  const std::uint64_t blockBytes =
      std::uint64_t{info.effectiveWidth} * height + kHeaderBytes + headerPaletteBytes();
  if (blockBytes == GetSize()) {
    dib = wren::dither::allocateBytes(allocator_, GetSize()).release();
  }
  if (dib == nullptr) {
    setLastError(kNoMemory);
    return nullptr;
  }
  auto* block = static_cast<std::uint8_t*>(dib);
  std::memcpy(block, &header, kHeaderBytes);
  std::memset(block + kHeaderBytes, 0, GetPaletteSize());
  info.bits = GetBits(0);
  return dib;
}

bool CxImage::CreateFromArray(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                              std::uint32_t bitsPerPixel, std::uint32_t bytesPerLine, bool flip) {
  if (source == nullptr || !isDepth(bitsPerPixel)) return false;
  if (Create(width, height, bitsPerPixel, 0) == nullptr) return false;
  if (bitsPerPixel < 24) SetGrayPalette();
  const std::size_t bytes = std::min(info.effectiveWidth, bytesPerLine);
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* from = source + y * bytesPerLine;
    std::uint8_t* to = row(flip ? height - 1 - y : y);
    if (bitsPerPixel == 32) {
      copyBlueGreenRed(from, width, to);
    } else {
      std::memcpy(to, from, bytes);
    }
  }
  return true;
}

bool CxImage::Destroy() {
  std::free(dib);
  dib = nullptr;
  return true;
}

bool CxImage::Transfer(CxImage& from, bool /*transferFrames*/) {
  Destroy();
  header = from.header;
  info = from.info;
  dib = from.dib;
  from.header = {};
  from.info = {};
  from.dib = nullptr;
  return true;
}

void CxImage::CopyInfo(const CxImage& from) {
  if (dib == nullptr) info = from.info;
}

std::uint8_t* CxImage::GetBits(std::uint32_t row) {
  return const_cast<std::uint8_t*>(static_cast<const CxImage*>(this)->GetBits(row));
}

const std::uint8_t* CxImage::GetBits(std::uint32_t row) const {
  if (dib == nullptr || row >= static_cast<std::uint32_t>(header.height)) return nullptr;
  return static_cast<const std::uint8_t*>(dib) + header.size + GetPaletteSize() +
         std::size_t{row} * info.effectiveWidth;
}

tagRGBQUAD* CxImage::GetPalette() {
  return const_cast<tagRGBQUAD*>(static_cast<const CxImage*>(this)->GetPalette());
}

const tagRGBQUAD* CxImage::GetPalette() const {
  if (dib == nullptr || header.colorsUsed == 0) return nullptr;
  return reinterpret_cast<const tagRGBQUAD*>(static_cast<const std::uint8_t*>(dib) + kHeaderBytes);
}

void CxImage::SetPalette(const tagRGBQUAD* entries, std::uint32_t count) {
  tagRGBQUAD* palette = GetPalette();
  if (palette == nullptr || entries == nullptr) return;
  std::copy_n(entries, std::min(count, header.colorsUsed), palette);
}

void CxImage::SetGrayPalette() {
  tagRGBQUAD* palette = GetPalette();
  if (palette == nullptr) return;
  const std::uint32_t step = 255 / (header.colorsUsed - 1);
  for (std::uint32_t i = 0; i < header.colorsUsed; ++i) {
    const auto level = static_cast<std::uint8_t>(i * step);
    palette[i].blue = level;
    palette[i].green = level;
    palette[i].red = level;
  }
}

void CxImage::SetPaletteColor(std::uint8_t index, std::uint8_t red, std::uint8_t green,
                              std::uint8_t blue, std::uint8_t reserved) {
  tagRGBQUAD* palette = GetPalette();
  if (palette == nullptr || index >= header.colorsUsed) return;
  palette[index] = {blue, green, red, reserved};
}

tagRGBQUAD CxImage::GetPaletteColor(std::uint8_t index) const {
  const tagRGBQUAD* palette = GetPalette();
  if (palette == nullptr || index >= header.colorsUsed) return {};
  return palette[index];
}

std::uint8_t CxImage::GetNearestIndex(tagRGBQUAD color) {
  const tagRGBQUAD* palette = GetPalette();
  if (palette == nullptr) return 0;
  if (info.nearestCacheValid && info.nearestCacheColor == color) return info.nearestCacheIndex;
  info.nearestCacheColor = color;
  info.nearestCacheValid = true;
  std::uint32_t count = header.colorsUsed;
  if (header.colorsImportant != 0) count = std::min(count, header.colorsImportant);
  info.nearestCacheIndex = nearestOf(palette, count, color);
  return info.nearestCacheIndex;
}
