// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/qv_image.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

namespace {

// A negative dimension gives a count above any possible allocation.
std::uint8_t* allocate(std::uint64_t bytes) {
  if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
    throw std::bad_alloc();
  }
  return new std::uint8_t[static_cast<std::size_t>(bytes)];
}

std::uint8_t* allocateCopy(std::uint64_t bytes, const std::uint8_t* pixels) {
  std::uint8_t* copy = allocate(bytes);
  if (bytes != 0) std::memcpy(copy, pixels, static_cast<std::size_t>(bytes));
  return copy;
}

}  // namespace

QVImage::QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout, const std::uint8_t* pixels)
    : width(imageWidth),
      height(imageHeight),
      channels(wren::stencil::bytesPerPixel(layout)),
      colorType(layout) {
  data = allocateCopy(byteCount(), pixels);
}

QVImage::QVImage(int imageWidth, int imageHeight, QV_IMG_COLOR layout)
    : width(imageWidth),
      height(imageHeight),
      channels(wren::stencil::bytesPerPixel(layout)),
      colorType(layout) {
  data = allocate(byteCount());
}

QVImage::QVImage(const QVImage& other)
    : width(other.width),
      height(other.height),
      channels(other.channels),
      colorType(other.colorType) {
  data = allocateCopy(byteCount(), other.data);
}

// Allocates first, so that a failed allocation leaves this image unchanged.
QVImage& QVImage::operator=(const QVImage& other) {
  std::uint8_t* copy = allocateCopy(other.byteCount(), other.data);
  width = other.width;
  height = other.height;
  channels = other.channels;
  colorType = other.colorType;
  delete[] data;
  data = copy;
  return *this;
}

void QVImage::release() {
  width = 0;
  height = 0;
  channels = 0;
  delete[] data;
  data = nullptr;
}

std::uint64_t QVImage::byteCount() const {
  const auto extended = [](std::int32_t v) { return static_cast<std::uint64_t>(std::int64_t{v}); };
  return extended(width) * extended(height) * extended(channels);
}

namespace wren::stencil {

int bytesPerPixel(QV_IMG_COLOR layout) {
  if (layout == QV_IMG_GRAY) return 1;
  if (layout == QV_IMG_BGR || layout == QV_IMG_RGB) return 3;
  return 4;
}

}  // namespace wren::stencil
