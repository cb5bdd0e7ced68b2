// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The palette bitmap, one pixel at a time. This is what the fast bitmap is
// measured against: every operation goes through the per-pixel accessors, in
// the order in which the results are defined, and nothing is precomputed. It is
// not meant to be used by anything but tests, benchmarks and fuzzers.

#ifndef WREN_TESTS_REFERENCE_CXIMAGE_H_
#define WREN_TESTS_REFERENCE_CXIMAGE_H_

#include <cstdint>

namespace reference {

/// Largest size in bytes that a bitmap may ask for.
inline constexpr uint32_t CXIMAGE_MAX_MEMORY = 2147483647;

/// A palette entry as a BMP file stores it.
struct tagRGBQUAD {
  uint8_t blue;
  uint8_t green;
  uint8_t red;
  uint8_t reserved;
};

/// The BMP information header: 40 bytes, little-endian on the machines supported here.
struct BitmapHeader {
  uint32_t headerSize;
  int32_t width;
  int32_t height;
  uint16_t planes;
  uint16_t bitsPerPixel;
  uint32_t compression;
  uint32_t imageSize;
  int32_t horizontalResolution;
  int32_t verticalResolution;
  uint32_t colorsUsed;
  uint32_t colorsImportant;
};
static_assert(sizeof(BitmapHeader) == 40);

/// What a bitmap knows besides its header.
struct BitmapInfo {
  uint32_t effectiveWidth;  // bytes per row, a multiple of 4
  uint8_t* bits;            // first byte of row 0
  uint32_t imageType;
  char lastError[256];
  tagRGBQUAD nearestCacheColor;
  uint8_t nearestCacheIndex;
  bool nearestCacheValid;
};

/// A bitmap of 1, 4, 8 or 24 bits per pixel in one heap block: header, palette, rows.
/// Rows are counted in memory order.
class CxImage {
 public:
  CxImage();
  ~CxImage();
  CxImage(const CxImage&) = delete;
  CxImage& operator=(const CxImage&) = delete;

  // Storage.
  void* Create(uint32_t width, uint32_t height, uint32_t bitsPerPixel, uint32_t imageType);
  bool CreateFromArray(const uint8_t* source, uint32_t width, uint32_t height,
                       uint32_t bitsPerPixel, uint32_t bytesPerLine, bool flip);
  bool Destroy();
  bool Transfer(CxImage& from, bool transferFrames = true);
  void CopyInfo(const CxImage& from);
  bool IsValid() const;
  const char* GetLastError() const;
  int32_t GetWidth() const;
  int32_t GetHeight() const;
  uint32_t GetSize() const;
  uint8_t* GetBits(uint32_t row = 0) const;

  // Palette.
  uint32_t GetNumColors() const;
  uint32_t GetPaletteSize() const;
  tagRGBQUAD* GetPalette() const;
  void SetPalette(const tagRGBQUAD* entries, uint32_t count);
  void SetGrayPalette();
  void SetPaletteColor(uint8_t index, uint8_t red, uint8_t green, uint8_t blue, uint8_t reserved);
  tagRGBQUAD GetPaletteColor(uint8_t index) const;
  uint8_t GetNearestIndex(tagRGBQUAD color);

  // Pixels.
  uint8_t GetPixelIndex(int64_t x, int64_t y) const;
  void SetPixelIndex(int64_t x, int64_t y, uint8_t index);
  uint8_t BlindGetPixelIndex(int64_t x, int64_t y) const;
  void BlindSetPixelIndex(int64_t x, int64_t y, uint8_t index);
  tagRGBQUAD BlindGetPixelColor(int64_t x, int64_t y, bool getAlpha = true) const;
  void BlindSetPixelColor(int64_t x, int64_t y, tagRGBQUAD color, bool setAlpha = false);

  // Whole-image operations.
  bool Rotate180(CxImage* destination);
  void Mirror();
  void MakeCenter(int32_t newWidth);
  void Negative();
  bool Light(int32_t brightness, int32_t contrast);
  bool Lut(const uint8_t* table);
  bool IncreaseBpp(uint32_t depth);

  // Halftoning to 1 bit per pixel.
  bool Dither(int64_t method);

  BitmapHeader header;
  BitmapInfo info;
  uint8_t* dib;

 private:
  bool isInside(int64_t x, int64_t y) const;
  void setLastError(const char* text);
  void startCopyOf(const CxImage& source, uint32_t width, uint32_t depth);
  void ditherThreshold(CxImage& result) const;
  void ditherOrdered(CxImage& result) const;
  void ditherBayer(CxImage& result) const;
  void ditherDiffusion(CxImage& result, int64_t method);
};

}  // namespace reference

#endif  // WREN_TESTS_REFERENCE_CXIMAGE_H_
