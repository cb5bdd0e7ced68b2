// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Small grey pages for the tests, and a comparison of pages that names the first pixel
// that differs.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "stencil/qv_image.h"

namespace wren::stencil {

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

/// Compares two pages with rows of `width` bytes.
inline testing::AssertionResult samePixels(const Bytes& actual, const Bytes& expected, int width) {
  if (actual.size() != expected.size()) {
    return testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (actual[i] == expected[i]) continue;
    const auto rowBytes = static_cast<std::size_t>(width);
    return testing::AssertionFailure()
           << "column " << i % rowBytes << ", row " << i / rowBytes << ": " << int{actual[i]}
           << " instead of " << int{expected[i]};
  }
  return testing::AssertionSuccess();
}

}  // namespace wren::stencil
