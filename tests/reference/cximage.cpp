// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/reference/cximage.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace reference {

namespace {

constexpr std::uint32_t kHeaderSize = 40;

std::uint32_t normalisedDepth(std::uint32_t bitsPerPixel) {
  if (bitsPerPixel <= 1) return 1;
  if (bitsPerPixel <= 4) return 4;
  if (bitsPerPixel <= 8) return 8;
  return 24;
}

std::uint32_t colorsOfDepth(std::uint32_t depth) {
  if (depth == 1) return 2;
  if (depth == 4) return 16;
  if (depth == 8) return 256;
  return 0;
}

std::int32_t saturatedSum(std::int32_t a, std::int32_t b) {
  const std::int64_t sum = std::int64_t{a} + std::int64_t{b};
  if (sum > std::numeric_limits<std::int32_t>::max())
    return std::numeric_limits<std::int32_t>::max();
  if (sum < std::numeric_limits<std::int32_t>::min())
    return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(sum);
}

std::int32_t saturatedInt(float value) {
  if (value >= 2147483648.0F) return std::numeric_limits<std::int32_t>::max();
  if (value < -2147483648.0F) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

int squaredDifference(std::uint8_t a, std::uint8_t b) {
  const int difference = int{a} - int{b};
  return difference * difference;
}

bool sameColor(tagRGBQUAD a, tagRGBQUAD b) {
  return a.blue == b.blue && a.green == b.green && a.red == b.red && a.reserved == b.reserved;
}

}  // namespace

CxImage::CxImage() : header(), info(), dib(nullptr) {}

CxImage::~CxImage() {
  Destroy();
}

// Storage ---------------------------------------------------------------------

void* CxImage::Create(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel,
                      std::uint32_t imageType) {
  Destroy();
  if (width == 0 || height == 0) {
    setLastError("CxImage::Create : width and height must be greater than zero");
    return nullptr;
  }
  const std::uint32_t depth = normalisedDepth(bitsPerPixel);
  // The first comparison is never true for a 32-bit product; the second detects overflow.
  const std::uint32_t product = width * height * depth;
  const std::uint32_t pixels = width * height;
  if ((product >> 3) > CXIMAGE_MAX_MEMORY || product / depth != pixels) {
    setLastError("CXIMAGE_MAX_MEMORY exceeded");
    return nullptr;
  }
  // The test above misses an overflow of width * height and the padding of the rows. Such a block
  // would be smaller than its pixels, so these sizes fail in the same way.
  const std::uint64_t rowBytes = (std::uint64_t{depth} * width + 31) / 32 * 4;
  if (std::uint64_t{width} * height > UINT32_MAX || rowBytes * height > UINT32_MAX - 1064) {
    setLastError("CXIMAGE_MAX_MEMORY exceeded");
    return nullptr;
  }
  info.effectiveWidth = ((depth * width + 31) >> 5) << 2;
  info.imageType = imageType;
  header.headerSize = kHeaderSize;
  header.width = static_cast<std::int32_t>(width);
  header.height = static_cast<std::int32_t>(height);
  header.planes = 1;
  header.bitsPerPixel = static_cast<std::uint16_t>(depth);
  header.compression = 0;
  header.imageSize = info.effectiveWidth * height;
  header.colorsUsed = colorsOfDepth(depth);
  dib = static_cast<std::uint8_t*>(std::malloc(GetSize()));
  if (dib == nullptr) {
    setLastError("CxImage::Create can't allocate memory");
    return nullptr;
  }
  std::memset(dib + kHeaderSize, 0, GetPaletteSize());
  std::memcpy(dib, &header, kHeaderSize);
  info.bits = GetBits(0);
  return dib;
}

bool CxImage::CreateFromArray(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                              std::uint32_t bitsPerPixel, std::uint32_t bytesPerLine, bool flip) {
  if (source == nullptr) return false;
  if (bitsPerPixel != 1 && bitsPerPixel != 4 && bitsPerPixel != 8 && bitsPerPixel != 24 &&
      bitsPerPixel != 32)
    return false;
  if (Create(width, height, bitsPerPixel, 0) == nullptr) return false;
  if (bitsPerPixel < 24) SetGrayPalette();
  for (std::uint32_t row = 0; row < height; ++row) {
    std::uint8_t* to = GetBits(flip ? height - 1 - row : row);
    const std::uint8_t* from = source + std::size_t{row} * bytesPerLine;
    if (bitsPerPixel != 32) {
      std::memcpy(to, from,
                  info.effectiveWidth < bytesPerLine ? info.effectiveWidth : bytesPerLine);
      continue;
    }
    for (std::size_t x = 0; x < width; ++x) {
      to[x * 3] = from[x * 4];
      to[x * 3 + 1] = from[x * 4 + 1];
      to[x * 3 + 2] = from[x * 4 + 2];
    }
  }
  return true;
}

bool CxImage::Destroy() {
  if (dib != nullptr) {
    std::free(dib);
    dib = nullptr;
  }
  return true;
}

bool CxImage::Transfer(CxImage& from, bool /*transferFrames*/) {
  Destroy();
  header = from.header;
  info = from.info;
  dib = from.dib;
  from.header = BitmapHeader();
  from.info = BitmapInfo();
  from.dib = nullptr;
  return true;
}

void CxImage::CopyInfo(const CxImage& from) {
  if (dib == nullptr) info = from.info;
}

bool CxImage::IsValid() const {
  return dib != nullptr;
}

const char* CxImage::GetLastError() const {
  return info.lastError;
}

std::int32_t CxImage::GetWidth() const {
  return header.width;
}

std::int32_t CxImage::GetHeight() const {
  return header.height;
}

std::uint32_t CxImage::GetSize() const {
  return header.headerSize + header.imageSize + header.colorsUsed * 4;
}

std::uint8_t* CxImage::GetBits(std::uint32_t row) const {
  if (dib == nullptr) return nullptr;
  std::uint8_t* start = dib + header.headerSize + GetPaletteSize();
  if (row == 0) return start;
  if (row < static_cast<std::uint32_t>(header.height))
    return start + std::size_t{row} * info.effectiveWidth;
  return nullptr;
}

void CxImage::setLastError(const char* text) {
  std::snprintf(info.lastError, sizeof(info.lastError), "%s", text);
}

// Palette ---------------------------------------------------------------------

std::uint32_t CxImage::GetNumColors() const {
  return dib == nullptr ? 0 : header.colorsUsed;
}

std::uint32_t CxImage::GetPaletteSize() const {
  return GetNumColors() * 4;
}

tagRGBQUAD* CxImage::GetPalette() const {
  if (dib == nullptr || header.colorsUsed == 0) return nullptr;
  return reinterpret_cast<tagRGBQUAD*>(dib + kHeaderSize);
}

void CxImage::SetPalette(const tagRGBQUAD* entries, std::uint32_t count) {
  if (entries == nullptr || GetPalette() == nullptr) return;
  const std::uint32_t n = count < header.colorsUsed ? count : header.colorsUsed;
  for (std::uint32_t i = 0; i < n; ++i) GetPalette()[i] = entries[i];
}

void CxImage::SetGrayPalette() {
  if (GetPalette() == nullptr) return;
  for (std::uint32_t i = 0; i < header.colorsUsed; ++i) {
    const auto level = static_cast<std::uint8_t>(i * (255 / (header.colorsUsed - 1)));
    GetPalette()[i].blue = level;
    GetPalette()[i].green = level;
    GetPalette()[i].red = level;
  }
}

void CxImage::SetPaletteColor(std::uint8_t index, std::uint8_t red, std::uint8_t green,
                              std::uint8_t blue, std::uint8_t reserved) {
  if (GetPalette() == nullptr || index >= header.colorsUsed) return;
  GetPalette()[index] = tagRGBQUAD{blue, green, red, reserved};
}

tagRGBQUAD CxImage::GetPaletteColor(std::uint8_t index) const {
  if (GetPalette() == nullptr || index >= header.colorsUsed) return tagRGBQUAD{0, 0, 0, 0};
  return GetPalette()[index];
}

std::uint8_t CxImage::GetNearestIndex(tagRGBQUAD color) {
  if (GetPalette() == nullptr) return 0;
  if (info.nearestCacheValid && sameColor(info.nearestCacheColor, color))
    return info.nearestCacheIndex;
  info.nearestCacheColor = color;
  info.nearestCacheValid = true;
  std::uint32_t n = header.colorsImportant != 0 ? header.colorsImportant : header.colorsUsed;
  if (n > header.colorsUsed) n = header.colorsUsed;
  int best = 200000;
  std::uint8_t answer = 0;
  for (std::uint32_t i = 0; i < n; ++i) {
    const tagRGBQUAD entry = GetPalette()[i];
    const int distance = squaredDifference(entry.blue, color.blue) +
                         squaredDifference(entry.green, color.green) +
                         squaredDifference(entry.red, color.red);
    if (distance < best) {
      best = distance;
      answer = static_cast<std::uint8_t>(i);
    }
    if (distance == 0) break;
  }
  info.nearestCacheIndex = answer;
  return answer;
}

// Pixels ----------------------------------------------------------------------

bool CxImage::isInside(std::int64_t x, std::int64_t y) const {
  return x >= 0 && y >= 0 && x < header.width && y < header.height;
}

std::uint8_t CxImage::GetPixelIndex(std::int64_t x, std::int64_t y) const {
  if (dib == nullptr || header.colorsUsed == 0) return 0;
  // Out of range: the first pixel byte, not 0.
  if (!isInside(x, y)) return *info.bits;
  return BlindGetPixelIndex(x, y);
}

void CxImage::SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index) {
  if (dib == nullptr || header.colorsUsed == 0 || !isInside(x, y)) return;
  BlindSetPixelIndex(x, y, index);
}

std::uint8_t CxImage::BlindGetPixelIndex(std::int64_t x, std::int64_t y) const {
  const std::uint8_t* row = info.bits + y * std::int64_t{info.effectiveWidth};
  if (header.bitsPerPixel == 8) return row[x];
  if (header.bitsPerPixel == 4) {
    const int shift = x % 2 == 0 ? 4 : 0;
    return static_cast<std::uint8_t>((row[x * 4 / 8] >> shift) & 15);
  }
  if (header.bitsPerPixel == 1) {
    const int shift = static_cast<int>(7 - x % 8);
    return static_cast<std::uint8_t>((row[x / 8] >> shift) & 1);
  }
  return 0;
}

void CxImage::BlindSetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index) {
  std::uint8_t* row = info.bits + y * std::int64_t{info.effectiveWidth};
  if (header.bitsPerPixel == 8) {
    row[x] = index;
  } else if (header.bitsPerPixel == 4) {
    const int shift = x % 2 == 0 ? 4 : 0;
    std::uint8_t& byte = row[x * 4 / 8];
    byte = static_cast<std::uint8_t>((byte & ~(15 << shift)) | ((index & 15) << shift));
  } else if (header.bitsPerPixel == 1) {
    const int shift = static_cast<int>(7 - x % 8);
    std::uint8_t& byte = row[x / 8];
    byte = static_cast<std::uint8_t>((byte & ~(1 << shift)) | ((index & 1) << shift));
  }
}

tagRGBQUAD CxImage::BlindGetPixelColor(std::int64_t x, std::int64_t y, bool /*getAlpha*/) const {
  if (header.colorsUsed != 0) return GetPaletteColor(BlindGetPixelIndex(x, y));
  const std::uint8_t* pixel = info.bits + y * std::int64_t{info.effectiveWidth} + x * 3;
  return tagRGBQUAD{pixel[0], pixel[1], pixel[2], 0};
}

void CxImage::BlindSetPixelColor(std::int64_t x, std::int64_t y, tagRGBQUAD color,
                                 bool /*setAlpha*/) {
  if (header.colorsUsed != 0) {
    BlindSetPixelIndex(x, y, GetNearestIndex(color));
    return;
  }
  std::uint8_t* pixel = info.bits + y * std::int64_t{info.effectiveWidth} + x * 3;
  pixel[0] = color.blue;
  pixel[1] = color.green;
  pixel[2] = color.red;
}

// Whole-image operations --------------------------------------------------------

// Creates this image with the height and the palette of `source`.
void CxImage::startCopyOf(const CxImage& source, std::uint32_t width, std::uint32_t depth) {
  CopyInfo(source);
  Create(width, static_cast<std::uint32_t>(source.header.height), depth, source.info.imageType);
  SetPalette(source.GetPalette(), source.GetNumColors());
}

bool CxImage::Rotate180(CxImage* destination) {
  if (dib == nullptr) return false;
  CxImage temporary;
  temporary.startCopyOf(*this, static_cast<std::uint32_t>(header.width), 8);
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      temporary.SetPixelIndex(header.width - 1 - x, header.height - 1 - y,
                              BlindGetPixelIndex(x, y));
    }
  }
  if (destination != nullptr) {
    destination->Transfer(temporary);
  } else {
    Transfer(temporary);
  }
  return true;
}

void CxImage::Mirror() {
  if (dib == nullptr) return;
  CxImage temporary;
  temporary.startCopyOf(*this, static_cast<std::uint32_t>(header.width), 8);
  const std::int64_t last = (std::int64_t{header.width} - 1) * (header.bitsPerPixel == 24 ? 3 : 1);
  for (std::int64_t y = 0; y < header.height && temporary.IsValid(); ++y) {
    for (std::int64_t k = 0; k <= last; ++k) {
      // At depths other than 8 the index can exceed the row.
      if (last - k >= info.effectiveWidth || k >= temporary.info.effectiveWidth) continue;
      temporary.GetBits(static_cast<std::uint32_t>(y))[k] =
          GetBits(static_cast<std::uint32_t>(y))[last - k];
    }
  }
  Transfer(temporary);
}

void CxImage::MakeCenter(std::int32_t newWidth) {
  if (dib == nullptr || header.width >= newWidth) return;
  CxImage temporary;
  temporary.startCopyOf(*this, static_cast<std::uint32_t>(newWidth), 8);
  const std::int32_t offset = (newWidth - header.width) / 2;
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      temporary.SetPixelIndex(x + offset, y, BlindGetPixelIndex(x, y));
    }
  }
  Transfer(temporary);
}

void CxImage::Negative() {
  if (dib == nullptr) return;
  for (std::uint32_t i = 0; i < header.imageSize; ++i)
    info.bits[i] = static_cast<std::uint8_t>(info.bits[i] ^ 0xFF);
}

bool CxImage::Light(std::int32_t brightness, std::int32_t contrast) {
  if (dib == nullptr) return false;
  const float c = static_cast<float>(saturatedSum(contrast, 100)) / 100.0F;
  const std::int32_t b = saturatedSum(brightness, 128);
  std::uint8_t table[256];
  for (int i = 0; i < 256; ++i) {
    const float v = static_cast<float>(i - 128) * c + static_cast<float>(b) + 0.5F;
    const std::int32_t level = saturatedInt(v);
    table[i] = static_cast<std::uint8_t>(level < 0 ? 0 : level > 255 ? 255 : level);
  }
  return Lut(table);
}

bool CxImage::Lut(const std::uint8_t* table) {
  if (dib == nullptr || table == nullptr) return false;
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      BlindSetPixelIndex(x, y, table[BlindGetPixelIndex(x, y)]);
    }
  }
  return true;
}

bool CxImage::IncreaseBpp(std::uint32_t depth) {
  if (dib == nullptr) return false;
  if (depth != 4 && depth != 8 && depth != 24) return false;
  if (header.bitsPerPixel == depth) return true;
  if (header.bitsPerPixel > depth) return false;
  CxImage temporary;
  temporary.startCopyOf(*this, static_cast<std::uint32_t>(header.width), depth);
  if (!temporary.IsValid()) {
    setLastError(temporary.GetLastError());
    return false;
  }
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      if (depth == 24) {
        temporary.BlindSetPixelColor(x, y, BlindGetPixelColor(x, y));
      } else {
        temporary.BlindSetPixelIndex(x, y, BlindGetPixelIndex(x, y));
      }
    }
  }
  Transfer(temporary);
  return true;
}

}  // namespace reference
