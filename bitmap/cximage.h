// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A palette bitmap in memory: one heap block laid out like the body of a BMP file
// (information header, palette, pixel rows). Jobs do not use it: their pages go to dither/
// directly. It reads and writes no files and has no alpha channel.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "dither/allocator.h"

/// A palette entry, or a colour passed by value. The byte order is that of a BMP file.
struct tagRGBQUAD {
  std::uint8_t blue;
  std::uint8_t green;
  std::uint8_t red;
  std::uint8_t reserved;

  friend bool operator==(const tagRGBQUAD&, const tagRGBQUAD&) = default;
};
static_assert(sizeof(tagRGBQUAD) == 4);

namespace wren::bitmap {

/// The published BMP information header: 40 bytes, little-endian. Copied to the start of
/// the block.
struct BitmapInfoHeader {
  std::uint32_t size;
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
static_assert(sizeof(BitmapInfoHeader) == 40 && std::is_trivially_copyable_v<BitmapInfoHeader>);

}  // namespace wren::bitmap

/// Largest number of pixel bytes that `Create` accepts.
inline constexpr std::uint32_t CXIMAGE_MAX_MEMORY = 2147483647;

/// An image of 1, 4 or 8 bits per pixel (palette indexes) or 24 bits (blue, green, red).
/// Row 0 is the first row in memory; rows are padded to a multiple of 4 bytes; the leftmost
/// pixel of a byte is in its most significant bits.
///
/// The object owns its block. Operations that change the geometry or the depth replace it:
/// pointers into the old block (`GetBits`, `GetPalette`) become invalid.
///
/// Nothing here throws. Failures are false or null results, some with a text in
/// `GetLastError`. Use an image from one thread at a time; even `GetNearestIndex` writes.
class CxImage {
 public:
  CxImage() = default;

  /// An image whose blocks, and those of its temporaries, come from `allocator`.
  explicit CxImage(wren::dither::Allocator allocator) : allocator_(allocator) {}

  ~CxImage() { Destroy(); }
  CxImage(const CxImage&) = delete;
  CxImage& operator=(const CxImage&) = delete;

  // Storage.

  /// Makes a new image in place of the current one. The depth is rounded up to 1, 4, 8 or 24.
  /// The palette is all zero, the pixels are undefined. `imageType` is stored and never
  /// interpreted.
  /// @return the block, or null with a text in `GetLastError`; the image is then empty.
  void* Create(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel,
               std::uint32_t imageType);

  /// Copies `height` rows of `bytesPerLine` bytes from `source` into a new image. Depths 1, 4
  /// and 8 get a grey palette; 32 bits become 24. With `flip` the first source row becomes
  /// the last row. If `bytesPerLine` is less than a row of the image, the rest of the row is
  /// undefined.
  /// @return false for a null source, another depth or a failed `Create`.
  bool CreateFromArray(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                       std::uint32_t bitsPerPixel, std::uint32_t bytesPerLine, bool flip);

  /// Frees the block; header and information record keep their values. Always true.
  bool Destroy();

  /// Moves block, header and information record of `from` into this image and zeroes those
  /// of `from`. `transferFrames` has no effect. Always true.
  bool Transfer(CxImage& from, bool transferFrames = true);

  /// Copies the information record of `from`, unless this image has a block.
  void CopyInfo(const CxImage& from);

  /// Whether the image has a block.
  bool IsValid() const { return dib != nullptr; }

  /// The text of the last failure; a success does not clear it.
  const char* GetLastError() const { return info.lastError.data(); }

  /// Width in pixels.
  std::int32_t GetWidth() const { return header.width; }

  /// Number of rows.
  std::int32_t GetHeight() const { return header.height; }

  /// Bytes of the block: header, palette and pixels. Without a block, the size of the last
  /// one that was asked for.
  std::uint32_t GetSize() const { return header.size + headerPaletteBytes() + header.imageSize; }

  /// The first byte of a row; null without a block or for a row beyond the last.
  std::uint8_t* GetBits(std::uint32_t row = 0);
  const std::uint8_t* GetBits(std::uint32_t row = 0) const;

  // Palette. Without a block or without a palette these do nothing, or return null or zero.

  /// Entries of the palette: 2, 16, 256, or 0 at 24 bits per pixel.
  std::uint32_t GetNumColors() const { return dib != nullptr ? header.colorsUsed : 0; }

  /// Bytes of the palette.
  std::uint32_t GetPaletteSize() const { return dib != nullptr ? headerPaletteBytes() : 0; }

  /// The first palette entry; null if there is none.
  tagRGBQUAD* GetPalette();
  const tagRGBQUAD* GetPalette() const;

  /// Copies `count` entries, at most as many as fit; null is ignored.
  void SetPalette(const tagRGBQUAD* entries, std::uint32_t count);

  /// Fills the palette with equal steps from black to white.
  void SetGrayPalette();

  /// Sets one entry. The arguments start with red, the stored entry with blue.
  void SetPaletteColor(std::uint8_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                       std::uint8_t reserved);

  /// One entry; all zero for an index beyond the palette.
  tagRGBQUAD GetPaletteColor(std::uint8_t index) const;

  /// The lowest index among the entries nearest to `color` by the sum of squared differences
  /// of blue, green and red. The last answer is cached; a change of the palette does not
  /// clear the cache.
  std::uint8_t GetNearestIndex(tagRGBQUAD color);

  // Pixels. `y` counts rows in memory order.

  /// The palette index of a pixel; 0 without a block or palette. Outside the image it is the
  /// first byte of the pixel data.
  std::uint8_t GetPixelIndex(std::int64_t x, std::int64_t y) const;

  /// Stores the low bits of `index`, as many as a pixel has. Does nothing without a block or
  /// palette, or outside the image.
  void SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);

  /// `GetPixelIndex` and `SetPixelIndex` without any check: the pixel must exist.
  std::uint8_t BlindGetPixelIndex(std::int64_t x, std::int64_t y) const;
  void BlindSetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);

  /// The colour of a pixel, which must exist. `getAlpha` has no effect.
  tagRGBQUAD BlindGetPixelColor(std::int64_t x, std::int64_t y, bool getAlpha = true) const;

  /// Sets a pixel, which must exist, to a colour or to the palette index nearest to it.
  /// `setAlpha` has no effect.
  void BlindSetPixelColor(std::int64_t x, std::int64_t y, tagRGBQUAD color, bool setAlpha = false);

  // Transforms.

  /// Rotates the image by 180 degrees into `destination`, or in place if that is null. The
  /// result has 8 bits per pixel. Without memory the target is empty.
  /// @return false for an empty image; true also without memory.
  bool Rotate180(CxImage* destination = nullptr);

  /// Mirrors the palette indexes left to right. The result has 8 bits per pixel (all 0 for a
  /// 24-bit image). Without memory the image is empty.
  void Mirror();

  /// Widens a narrower image to `newWidth` pixels and centres the picture. The result has 8
  /// bits per pixel and undefined margins. Without memory the image is empty.
  void MakeCenter(std::int32_t newWidth);

  /// Inverts every bit of the pixel rows, padding included, but not the palette.
  void Negative();

  /// Maps every palette index by `wren::dither::makeToneTable`. False for an empty image.
  bool Light(std::int32_t brightness, std::int32_t contrast = 0);

  /// Maps every palette index by a lookup table of 256 bytes; changes nothing at 24 bits.
  /// False for an empty image or a null table.
  bool Lut(const std::uint8_t* table);

  /// Raises the depth to 4, 8 or 24 bits per pixel.
  /// @return true also if the image has that depth; false, with the image unchanged, if it is
  ///   empty, deeper, or there is no memory (see `GetLastError`).
  bool IncreaseBpp(std::uint32_t depth);

  /// Dithers the image to 1 bit per pixel, black (index 0) and white (index 1), reading its
  /// palette indexes as grey levels. Changes nothing at 1 bit per pixel.
  /// @param method 0 threshold, 1 ordered, 2 Burkes, 3 Stucki, 4 Jarvis-Judice-Ninke,
  ///   5 Sierra, 6 Stevenson-Arce, 7 Bayer, any other number Floyd-Steinberg.
  /// @return false, with the image unchanged, if it is empty or there is no memory (see
  ///   `GetLastError`).
  bool Dither(std::int64_t method = 0);

 protected:
  /// The information record: run-time data that is not part of the block.
  struct Info {
    std::uint32_t effectiveWidth;  // bytes per row
    std::uint8_t* bits;            // first byte of row 0; dangling after Destroy
    std::uint32_t imageType;
    std::array<char, 256> lastError;
    tagRGBQUAD nearestCacheColor;
    std::uint8_t nearestCacheIndex;
    bool nearestCacheValid;
  };

  static constexpr const char* kNoMemory = "CxImage::Create can't allocate memory";

  wren::bitmap::BitmapInfoHeader header = {};
  Info info = {};
  void* dib = nullptr;

 private:
  std::size_t columns() const {
    return header.width > 0 ? static_cast<std::size_t>(header.width) : 0;
  }
  std::size_t rows() const {
    return header.height > 0 ? static_cast<std::size_t>(header.height) : 0;
  }
  std::uint8_t* row(std::size_t y) { return info.bits + y * info.effectiveWidth; }
  const std::uint8_t* row(std::size_t y) const { return info.bits + y * info.effectiveWidth; }

  // Palette size of the block that the header describes, allocated or not.
  std::uint32_t headerPaletteBytes() const {
    return header.colorsUsed * static_cast<std::uint32_t>(sizeof(tagRGBQUAD));
  }

  bool isInside(std::int64_t x, std::int64_t y) const;
  void setLastError(const char* text);
  void fillHeader(std::uint32_t width, std::uint32_t height, std::uint32_t depth);

  void makeSimilar(const CxImage& source, std::uint32_t width, std::uint32_t depth);
  void readIndexes(std::size_t y, std::uint8_t* indexes) const;
  void copyIndexesOf(const CxImage& source);
  void copyColorsOf(const CxImage& source);
  bool ditherFrom(CxImage& source, std::int64_t method);
  bool ditherFromBytes(CxImage& source, std::int64_t method);
  void ditherFromNibbles(const CxImage& source, std::int64_t method);

  wren::dither::Allocator allocator_ = nullptr;
};
