// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes PNG and JPEG files for tests, with libpng and libjpeg.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wren_test {

struct PngSpec {
  unsigned widthPx = 0;
  unsigned heightPx = 0;
  int bitDepth = 8;
  int colourType = 0;  ///< PNG_COLOR_TYPE_*
  bool isInterlaced = false;
  std::vector<std::uint8_t> rows;  ///< as the format stores them, without padding between rows
  std::vector<std::uint8_t> palette = {};       ///< red, green, blue
  std::vector<std::uint8_t> paletteAlpha = {};  ///< tRNS of a palette
  int transparentGrey = -1;                     ///< tRNS of grey
  int orientation = 0;                          ///< eXIf; 0: none
  bool exifBehind = false;                      ///< eXIf behind the pixels
};

std::string pngOf(const PngSpec& spec);

struct JpegSpec {
  unsigned widthPx = 0;
  unsigned heightPx = 0;
  int channels = 1;                ///< 1 grey, 3 red green blue, 4 CMYK
  std::vector<std::uint8_t> rows;  ///< 8 bits a channel
  int orientation = 0;             ///< EXIF; 0: none
  bool isProgressive = false;
  bool hasAdobeMarker = true;  ///< of CMYK; without it 255 means ink
};

/// Quality 100, no subsampling.
std::string jpegOf(const JpegSpec& spec);

}  // namespace wren_test
