// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A small palette bitmap in memory: one heap block laid out like the body of a
// BMP file (information header, palette, pixel rows), with pixel access, tone
// and geometric transforms, depth conversion and nine ways to dither.
//
// It reads and writes no files and has no alpha channel. Nothing here throws:
// failures are false or null results, some of them with a text in GetLastError.
// An image is used by one thread at a time; even GetNearestIndex writes to it.

#ifndef WREN_BITMAP_CXIMAGE_H_
#define WREN_BITMAP_CXIMAGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "dither/allocator.h"

/// A palette entry, or a colour passed by value, in the order it has in a BMP file.
struct tagRGBQUAD {
  std::uint8_t blue;
  std::uint8_t green;
  std::uint8_t red;
  std::uint8_t reserved;

  friend bool operator==(const tagRGBQUAD&, const tagRGBQUAD&) = default;
};
static_assert(sizeof(tagRGBQUAD) == 4);

/// The published BMP information header: 40 bytes, copied as it stands to the
/// start of the block.
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

/// The most bytes of pixels that a bitmap may ask for.
inline constexpr std::uint32_t CXIMAGE_MAX_MEMORY = 2147483647;

/// An image of 1, 4 or 8 bits per pixel (palette indexes) or 24 bits (blue,
/// green, red). Row 0 is the first row in memory; a row takes a multiple of 4
/// bytes; the leftmost pixel of a byte is in its most significant bits.
///
/// The object owns its block. Operations that change the geometry or the depth
/// put a new block in place of the old one, and pointers into the old one
/// (GetBits, GetPalette) become invalid.
class CxImage {
 public:
  CxImage() = default;

  /// An image whose blocks, and those of its temporaries, come from `allocator`.
  explicit CxImage(BitmapAllocator allocator) : allocator_(allocator) {}

  ~CxImage() { Destroy(); }
  CxImage(const CxImage&) = delete;
  CxImage& operator=(const CxImage&) = delete;

  // Storage.

  /// Makes a new image and drops the present one. The depth is rounded up to 1,
  /// 4, 8 or 24. The palette is all zero and the pixels are undefined.
  /// `imageType` is carried along and never interpreted. Returns the block, or
  /// null with a text in GetLastError; the image is then empty.
  void* Create(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel,
               std::uint32_t imageType);

  /// Makes an image from `height` rows of `bytesPerLine` bytes at `source`,
  /// which stays the caller's. Depths 1, 4 and 8 get a grey palette; 32 bits
  /// become 24. With `flip` the first source row becomes the last row. Where
  /// `bytesPerLine` is less than a row of the image, the rest of the row is
  /// undefined. Returns false for a null source, another depth or a failed Create.
  bool CreateFromArray(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                       std::uint32_t bitsPerPixel, std::uint32_t bytesPerLine, bool flip);

  /// Frees the block. Header and information record stay as they were. Always true.
  bool Destroy();

  /// Moves the block, header and information record of `from` into this image
  /// and leaves `from` all zero. `transferFrames` has no effect. Always true.
  bool Transfer(CxImage& from, bool transferFrames = true);

  /// Copies the information record of `from`, unless this image has a block.
  void CopyInfo(const CxImage& from);

  /// Whether the image has a block.
  bool IsValid() const { return dib != nullptr; }

  /// The text of the last failure; a success does not clear it.
  const char* GetLastError() const { return info.lastError.data(); }

  /// Pixels in a row.
  std::int32_t GetWidth() const { return header.width; }

  /// Rows.
  std::int32_t GetHeight() const { return header.height; }

  /// Bytes of the block: header, palette and pixels. Without a block those that the
  /// last one had, or should have had.
  std::uint32_t GetSize() const { return header.size + headerPaletteBytes() + header.imageSize; }

  /// The first byte of a row, null without a block or for a row below the last.
  std::uint8_t* GetBits(std::uint32_t row = 0);
  const std::uint8_t* GetBits(std::uint32_t row = 0) const;

  // Palette. Without a block or without colours these do nothing, or return
  // null or zero.

  /// Entries of the palette: 2, 16, 256, or 0 at 24 bits per pixel.
  std::uint32_t GetNumColors() const { return dib ? header.colorsUsed : 0; }

  /// Bytes of the palette.
  std::uint32_t GetPaletteSize() const { return dib ? headerPaletteBytes() : 0; }

  /// The first palette entry, null when there is none.
  tagRGBQUAD* GetPalette();
  const tagRGBQUAD* GetPalette() const;

  /// Copies `count` entries, at most as many as the palette has; null is ignored.
  void SetPalette(const tagRGBQUAD* entries, std::uint32_t count);

  /// Fills the palette with equal steps from black to white.
  void SetGrayPalette();

  /// Sets one entry. Note the order of the arguments: red comes first.
  void SetPaletteColor(std::uint8_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                       std::uint8_t reserved);

  /// One entry, or all zero for an index beyond the palette.
  tagRGBQUAD GetPaletteColor(std::uint8_t index) const;

  /// The lowest index among the entries nearest to `color` by the sum of squared
  /// differences of blue, green and red. The last answer is remembered, and
  /// stays remembered when the palette changes.
  std::uint8_t GetNearestIndex(tagRGBQUAD color);

  // Pixels. `y` counts rows in memory order.

  /// The palette index of a pixel; 0 without a block or palette. Outside the
  /// image it is the first byte of the pixels.
  std::uint8_t GetPixelIndex(std::int64_t x, std::int64_t y) const;

  /// Stores as many low bits of `index` as a pixel has. Does nothing without a
  /// block or palette, or outside the image.
  void SetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);

  /// Like GetPixelIndex and SetPixelIndex without any check: the pixel must exist.
  std::uint8_t BlindGetPixelIndex(std::int64_t x, std::int64_t y) const;
  void BlindSetPixelIndex(std::int64_t x, std::int64_t y, std::uint8_t index);

  /// The colour of a pixel, which must exist. The last argument has no effect.
  tagRGBQUAD BlindGetPixelColor(std::int64_t x, std::int64_t y, bool getAlpha = true) const;

  /// Sets a pixel, which must exist, to a colour or to the palette index nearest
  /// to it. The last argument has no effect.
  void BlindSetPixelColor(std::int64_t x, std::int64_t y, tagRGBQUAD color, bool setAlpha = false);

  // Transforms.

  /// Turns the image by half a turn into `destination`, or in place when that is
  /// null. The result has 8 bits per pixel. False for an empty image; true even
  /// when there was no memory, and then the target is empty.
  bool Rotate180(CxImage* destination = nullptr);

  /// Mirrors the image left to right. The result has 8 bits per pixel; its
  /// indexes are those of the image mirrored (all 0 for a 24-bit image).
  void Mirror();

  /// Widens a narrower image to `newWidth` pixels, with the picture in the middle.
  /// The result has 8 bits per pixel and undefined margins.
  void MakeCenter(std::int32_t newWidth);

  /// Inverts every bit of the pixel rows, padding included. The palette stays.
  void Negative();

  /// Shifts levels by `brightness` and scales their distance from 128 by
  /// (100 + `contrast`) percent. False for an empty image.
  bool Light(std::int32_t brightness, std::int32_t contrast = 0);

  /// Replaces every palette index by its entry in a table of 256 bytes; changes
  /// nothing at 24 bits. False for an empty image or a null table.
  bool Lut(const std::uint8_t* table);

  /// Raises the depth to 4, 8 or 24 bits per pixel. True also when the image has
  /// that depth; false, with the image unchanged, when it is empty, deeper, or
  /// there is no memory (see GetLastError).
  bool IncreaseBpp(std::uint32_t depth);

  /// Turns the image into black (index 0) and white (index 1) at 1 bit per
  /// pixel, reading its pixel indexes as grey levels. Methods: 0 threshold,
  /// 1 ordered, 2 Burkes, 3 Stucki, 4 Jarvis-Judice-Ninke, 5 Sierra,
  /// 6 Stevenson-Arce, 7 Bayer, any other number Floyd-Steinberg. True without a
  /// change at 1 bit per pixel. False when empty, and false with the image
  /// unchanged when there is no memory (see GetLastError).
  bool Dither(std::int64_t method = 0);

 protected:
  /// What is known about the image at run time and not written to its block.
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

  BitmapInfoHeader header = {};
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

  // The palette of the block that the header tells of, made or not.
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
  bool drawDots(std::int64_t method, CxImage& source);
  bool drawDotsOfBytes(std::int64_t method, CxImage& source);
  void drawDotsOfNibbles(std::int64_t method, const CxImage& source);

  BitmapAllocator allocator_ = nullptr;
};

#endif  // WREN_BITMAP_CXIMAGE_H_
