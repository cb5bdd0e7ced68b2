// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/bmp_file.h"

#include <algorithm>

namespace wren_test {

namespace {

std::uint32_t number(const std::string& bytes, std::size_t at, int size) {
  std::uint32_t value = 0;
  for (int i = size - 1; i >= 0; --i) {
    value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
  }
  return value;
}

}  // namespace

BmpFile readBmp(const std::string& bytes) {
  BmpFile file;
  if (bytes.size() < 54 || bytes.compare(0, 2, "BM") != 0) return file;
  file.complete = true;
  file.fileSize = number(bytes, 2, 4);
  file.reserved = number(bytes, 6, 4);
  file.pixelOffset = number(bytes, 10, 4);
  file.infoSize = number(bytes, 14, 4);
  file.width = static_cast<std::int32_t>(number(bytes, 18, 4));
  file.height = static_cast<std::int32_t>(number(bytes, 22, 4));
  file.planes = number(bytes, 26, 2);
  file.bitsPerPixel = number(bytes, 28, 2);
  file.compression = number(bytes, 30, 4);
  file.imageSize = number(bytes, 34, 4);
  file.resolutionX = number(bytes, 38, 4);
  file.resolutionY = number(bytes, 42, 4);
  file.coloursUsed = number(bytes, 46, 4);
  file.coloursImportant = number(bytes, 50, 4);
  const std::size_t start = std::min<std::size_t>(file.pixelOffset, bytes.size());
  file.palette = bytes.substr(54, start < 54 ? 0 : start - 54);
  file.pixels = bytes.substr(start);
  return file;
}

}  // namespace wren_test
