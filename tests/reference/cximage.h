// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reference implementation of the palette bitmap, for tests, benchmarks and fuzzers only. Every
// operation goes through the per-pixel accessors, in the order that defines the result; nothing is
// precomputed.

#pragma once

#include <cstdint>

namespace reference {

/// Size limit of a bitmap in bytes.
inline constexpr std::uint32_t CXIMAGE_MAX_MEMORY = 2147483647;

/// A palette entry as a BMP file stores it.
struct tagRGBQUAD {
  std::uint8_t blue;
  std::uint8_t green;
  std::uint8_t red;
  std::uint8_t reserved;
};

/// The BMP information header (BITMAPINFOHEADER): 40 bytes, little-endian.
struct BitmapHeader {
  std::uint32_t headerSize;
  std::int32_t width;
  std::int32_t height;
  std::uint16_t planes;
  std::uint16_t bitsPerPixel;
  std::uint32_t compression;
  std::uint32_t imageSize;
  std::int32_t horizontalResolution;
  std::int32_t verticalResolution;
  std::uint32_t colorsUsed;
  std::uint32_t colorsImportant;
};
static_assert(sizeof(BitmapHeader) == 40);

/// The state of a bitmap besides its header.
struct BitmapInfo {
  std::uint32_t effectiveWidth;  // bytes per row, a multiple of 4
  std::uint8_t* bits;            // first byte of row 0
  std::uint32_t imageType;
  char lastError[256];
  tagRGBQUAD nearestCacheColor;
  std::uint8_t nearestCacheIndex;
  bool nearestCacheValid;
};

/// A bitmap of 1, 4, 8 or 24 bits per pixel in one heap block: header, palette, rows. Row 0 is the
/// first in memory.
class CxImage {
 public:
  CxImage();
  ~CxImage();
  CxImage(const CxImage&) = delete;
  CxImage& operator=(const CxImage&) = delete;

  // Storage.
  void* Create(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel,
               std::uint32_t imageType);
  bool CreateFromArray(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                       std::uint32_t bitsPerPixel, std::uint32_t bytesPerLine, bool flip);
  bool Destroy();
  bool Transfer(CxImage& from, bool transferFrames = true);
  void CopyInfo(const CxImage& from);
  bool IsValid() const;
  const char* GetLastError() const;
  std::int32_t GetWidth() const;
  std::int32_t GetHeight() const;
  std::uint32_t GetSize() const;
  std::uint8_t* GetBits(std::uint32_t row = 0) const;

  // Palette.
  std::uint32_t GetNumColors() const;
  std::uint32_t GetPaletteSize() const;
  tagRGBQUAD* GetPalette() const;
  void SetPalette(const tagRGBQUAD* entries, std::uint32_t count);
  void SetGrayPalette();
  void SetPaletteColor(std::uint8_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                       std::uint8_t reserved);
  tagRGBQUAD GetPaletteColor(std::uint8_t index) const;
  std::uint8_t GetNearestIndex(tagRGBQUAD color);

  // Pixels.
  std::uint8_t GetPixelIndex(std::int64_t x, std::int64_t y) const;
  void SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);
  std::uint8_t BlindGetPixelIndex(std::int64_t x, std::int64_t y) const;
  void BlindSetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);
  tagRGBQUAD BlindGetPixelColor(std::int64_t x, std::int64_t y, bool getAlpha = true) const;
  void BlindSetPixelColor(std::int64_t x, std::int64_t y, tagRGBQUAD color, bool setAlpha = false);

  // Whole-image operations.
  bool Rotate180(CxImage* destination);
  void Mirror();
  void MakeCenter(std::int32_t newWidth);
  void Negative();
  bool Light(std::int32_t brightness, std::int32_t contrast);
  bool Lut(const std::uint8_t* table);
  bool IncreaseBpp(std::uint32_t depth);

  // Halftoning to 1 bit per pixel.
  bool Dither(std::int64_t method);

  BitmapHeader header;
  BitmapInfo info;
  std::uint8_t* dib;

 private:
  bool isInside(std::int64_t x, std::int64_t y) const;
  void setLastError(const char* text);
  void startCopyOf(const CxImage& source, std::uint32_t width, std::uint32_t depth);
  void ditherThreshold(CxImage& result) const;
  void ditherOrdered(CxImage& result) const;
  void ditherBayer(CxImage& result) const;
  void ditherDiffusion(CxImage& result, std::int64_t method);
};

}  // namespace reference
