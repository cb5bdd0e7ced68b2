// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/picture_files.h"

#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

// Needs <cstdio> before it.
#include <jpeglib.h>

namespace wren_test {
namespace {

// A TIFF header and a directory with the tag Orientation (0x0112), most significant byte first.
std::vector<std::uint8_t> exifOf(int orientation) {
  return {'M',  'M',  0, 42, 0, 0, 0, 8, 0, 1,
          0x01, 0x12, 0, 3,  0, 0, 0, 1, 0, static_cast<std::uint8_t>(orientation),
          0,    0,    0, 0,  0, 0};
}

void appendBytes(png_structp png, png_bytep data, png_size_t size) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(data), size);
}

[[noreturn]] void failPng(png_structp, png_const_charp message) {
  throw std::runtime_error(message);
}

void setChunks(png_structp png, png_infop info, const PngSpec& spec) {
  std::vector<png_color> colours;
  for (std::size_t i = 0; i + 2 < spec.palette.size(); i += 3) {
    colours.push_back({spec.palette[i], spec.palette[i + 1], spec.palette[i + 2]});
  }
  if (!colours.empty()) png_set_PLTE(png, info, colours.data(), static_cast<int>(colours.size()));
  if (!spec.paletteAlpha.empty()) {
    png_set_tRNS(png, info, spec.paletteAlpha.data(), static_cast<int>(spec.paletteAlpha.size()),
                 nullptr);
  }
  if (spec.transparentGrey >= 0) {
    png_color_16 grey{};
    grey.gray = static_cast<png_uint_16>(spec.transparentGrey);
    png_set_tRNS(png, info, nullptr, 0, &grey);
  }
}

void setExif(png_structp png, png_infop info, const PngSpec& spec) {
  std::vector<std::uint8_t> exif = exifOf(spec.orientation);
  png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
}

}  // namespace

std::string pngOf(const PngSpec& spec) {
  std::string file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, failPng, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &file, appendBytes, nullptr);
  png_set_IHDR(png, info, spec.widthPx, spec.heightPx, spec.bitDepth, spec.colourType,
               spec.isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  setChunks(png, info, spec);
  if (spec.orientation != 0 && !spec.exifBehind) setExif(png, info, spec);
  png_write_info(png, info);
  const std::size_t rowBytes = png_get_rowbytes(png, info);
  const int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass) {
    for (unsigned y = 0; y < spec.heightPx; ++y) {
      png_write_row(png, spec.rows.data() + y * rowBytes);
    }
  }
  if (spec.orientation != 0 && spec.exifBehind) setExif(png, info, spec);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

std::string jpegOf(const JpegSpec& spec) {
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = spec.widthPx;
  jpeg.image_height = spec.heightPx;
  jpeg.input_components = spec.channels;
  jpeg.in_color_space = spec.channels == 1   ? JCS_GRAYSCALE
                        : spec.channels == 3 ? JCS_RGB
                                             : JCS_CMYK;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
  if (spec.channels == 4 && !spec.hasAdobeMarker) jpeg.write_Adobe_marker = FALSE;
  if (spec.isProgressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  if (spec.orientation != 0) {
    std::vector<std::uint8_t> marker = {'E', 'x', 'i', 'f', 0, 0};
    const std::vector<std::uint8_t> exif = exifOf(spec.orientation);
    marker.insert(marker.end(), exif.begin(), exif.end());
    jpeg_write_marker(&jpeg, JPEG_APP0 + 1, marker.data(), static_cast<unsigned>(marker.size()));
  }
  while (jpeg.next_scanline < jpeg.image_height) {
    const std::uint8_t* row = spec.rows.data() + std::size_t{jpeg.next_scanline} * spec.widthPx *
                                                     static_cast<unsigned>(spec.channels);
    JSAMPROW rows[] = {const_cast<JSAMPROW>(row)};
    jpeg_write_scanlines(&jpeg, rows, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string file(reinterpret_cast<char*>(bytes), size);
  std::free(bytes);
  return file;
}

}  // namespace wren_test
