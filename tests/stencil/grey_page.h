// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Small grey pages for the tests, and a comparison of pages that names the first pixel
// that differs.

#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "stencil/qv_image.h"
#include "tests/support/same_bytes.h"

namespace wren::stencil {

using wren_test::sameBytes;

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(const QVImage& image) {
  return {image.data, image.data + image.byteCount()};
}

inline QVImage greyPage(int width, int height, const Bytes& levels) {
  return {width, height, QV_IMG_GRAY, levels.data()};
}

inline QVImage uniformPage(int width, int height, std::uint8_t level) {
  return greyPage(width, height, Bytes(static_cast<std::size_t>(width * height), level));
}

inline QVImage noisePage(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  Bytes levels(static_cast<std::size_t>(width * height));
  for (auto& level : levels) level = static_cast<std::uint8_t>(random() & 255U);
  return greyPage(width, height, levels);
}

inline std::uint8_t pixelAt(const QVImage& image, int x, int y) {
  return image.data[std::ptrdiff_t{y} * image.width + x];
}

}  // namespace wren::stencil
