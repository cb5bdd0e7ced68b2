// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The picture that every stage of the stencil halftone takes and returns: an
// owned raster of interleaved 8-bit samples. It knows nothing of what is done
// to the pixels.

#pragma once

#include <cstdint>

/// Layout of one pixel. It fixes the bytes per pixel and the order of the colours.
enum QV_IMG_COLOR : std::int32_t {
  QV_IMG_GRAY = 0,  ///< 1 byte: grey
  QV_IMG_BGR = 1,   ///< 3 bytes: blue, green, red
  QV_IMG_RGB = 2,   ///< 3 bytes: red, green, blue
  QV_IMG_BGRA = 3,  ///< 4 bytes: blue, green, red, alpha
  QV_IMG_RGBA = 4,  ///< 4 bytes: red, green, blue, alpha
};

/// Bytes per pixel of a layout: 1 for grey, 3 for the two layouts without alpha,
/// 4 for every other value, known or not.
int qv_channels(QV_IMG_COLOR layout);

/// A raster of width x height pixels without padding: the pixel at column x, row y
/// starts at byte (y * width + x) * channels, the top row first.
///
/// The image owns its buffer; copies are deep and there are no moves. Dimensions
/// whose byte count does not fit (negative ones among them) end in std::bad_alloc.
class QVImage {
 public:
  std::int32_t width = 0;   ///< pixels per row
  std::int32_t height = 0;  ///< rows
  std::int32_t channels = 4;
  QV_IMG_COLOR colorType = QV_IMG_BGR;
  std::uint8_t* data = nullptr;  ///< owned; width * height * channels bytes, or null

  /// Copies width * height * channels bytes from `pixels`, which stays the caller's.
  QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout, const std::uint8_t* pixels);

  /// Leaves the pixels uninitialised: whoever makes such an image writes every byte.
  QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout);

  /// The four numbers are taken over as they are; `channels` is not derived again.
  QVImage(const QVImage& other);
  QVImage& operator=(const QVImage& other);

  ~QVImage() { release(); }

  /// What the destructor does: frees the buffer and sets width, height, channels
  /// and data to zero. `colorType` keeps its value.
  void release();

  /// Bytes in the buffer, as an unsigned 64-bit product.
  std::uint64_t byteCount() const;
};
