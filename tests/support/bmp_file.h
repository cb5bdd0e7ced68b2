// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Parses the debug images (BMP files), field by field.

#pragma once

#include <cstdint>
#include <string>

namespace wren_test {

struct BmpFile {
  bool complete = false;  ///< the file has 54 header bytes that start with "BM"
  std::uint32_t fileSize = 0;
  std::uint32_t reserved = 0;
  std::uint32_t pixelOffset = 0;
  std::uint32_t infoSize = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::uint32_t planes = 0;
  std::uint32_t bitsPerPixel = 0;
  std::uint32_t compression = 0;
  std::uint32_t imageSize = 0;
  std::uint32_t resolutionX = 0;
  std::uint32_t resolutionY = 0;
  std::uint32_t coloursUsed = 0;
  std::uint32_t coloursImportant = 0;
  std::string palette;  ///< the bytes between header and pixels
  std::string pixels;   ///< the bytes from pixelOffset on
};

/// The file as parsed; `complete` is false if it is not a BMP file.
BmpFile readBmp(const std::string& bytes);

}  // namespace wren_test
