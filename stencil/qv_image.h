// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The image that the stages of the stencil halftone take and return: an owned raster
// of interleaved 8-bit samples. Not used by jobs, which run `stencilPage` on their own rows;
// kept for its API and its tests.

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

/// A raster of width x height pixels without padding: the pixel at column x, row y
/// starts at byte (y * width + x) * channels, the top row first.
///
/// The image owns its buffer; copies are deep and there are no moves. Throws
/// std::bad_alloc for dimensions whose byte count does not fit, and for negative ones.
class QVImage {
 public:
  std::int32_t width = 0;   ///< pixels per row
  std::int32_t height = 0;  ///< rows
  std::int32_t channels = 4;
  QV_IMG_COLOR colorType = QV_IMG_BGR;
  std::uint8_t* data = nullptr;  ///< owned; width * height * channels bytes, or null

  /// Copies width * height * channels bytes from `pixels`, which stays the caller's.
  QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout, const std::uint8_t* pixels);

  /// Leaves the pixels uninitialised: the caller has to write every byte.
  QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout);

  /// Copies the four numbers unchanged; `channels` is not derived from the layout again.
  QVImage(const QVImage& other);
  QVImage& operator=(const QVImage& other);

  ~QVImage() { release(); }

  /// Frees the buffer and sets width, height, channels and data to zero. `colorType`
  /// keeps its value.
  void release();

  /// Bytes in the buffer, as an unsigned 64-bit product.
  std::uint64_t byteCount() const;
};

namespace wren::stencil {

/// 1 for grey, 3 for the two layouts without alpha, 4 for every other value, known or
/// not.
int bytesPerPixel(QV_IMG_COLOR layout);

}  // namespace wren::stencil
