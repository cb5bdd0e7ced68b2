// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads a PNG file with the simplified reader of libpng.

#pragma once

#include <gtest/gtest.h>
#include <png.h>

#include <cstdint>
#include <string>
#include <vector>

/// Grey levels, rows from top to bottom; 0 is black.
struct GreyPicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;

  /// Rows of '#' for black and '.' for anything else.
  std::string text() const {
    std::string result;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      result += pixels[i] == 0 ? '#' : '.';
      if ((i + 1) % width == 0) result += '\n';
    }
    return result;
  }
};

/// Reads on where png_image_begin_read_from_... has ended; empty if that failed.
inline GreyPicture finishPng(png_image& image, int begun) {
  GreyPicture picture;
  if (begun == 0) return picture;
  image.format = PNG_FORMAT_GRAY;
  picture.pixels.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) return {};
  picture.width = image.width;
  picture.height = image.height;
  return picture;
}

/// The picture in a PNG file; empty if the file cannot be read.
inline GreyPicture readPng(const std::string& path) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  return finishPng(image, png_image_begin_read_from_file(&image, path.c_str()));
}

/// The picture in the bytes of such a file.
inline GreyPicture readPngBytes(const std::string& bytes) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  return finishPng(image, png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
}
