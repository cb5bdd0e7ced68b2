// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/png_file.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "common/handles.h"

namespace wren::preview {
namespace {

// Owns the two structures of libpng.
class PngWriter {
 public:
  explicit PngWriter(std::string* error)
      : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, error, onError, onWarning)),
        info_(png_ != nullptr ? png_create_info_struct(png_) : nullptr) {}
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  png_structp png() const { return png_; }
  png_infop info() const { return info_; }
  bool usable() const { return info_ != nullptr; }

 private:
  [[noreturn]] static void onError(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
  }
  static void onWarning(png_structp, png_const_charp) {}

  png_structp png_;
  png_infop info_;
};

int bitDepth(const Picture& picture) {
  return picture.inkCount() <= 2 ? 1 : 4;
}

void writeHeader(const PngWriter& writer, const Picture& picture) {
  // The default limit of libpng is a million rows; a roll of paper can exceed it.
  png_set_user_limits(writer.png(), PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(writer.png(), writer.info(), picture.width(),
               static_cast<png_uint_32>(picture.height()), bitDepth(picture),
               PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_color palette[kInkCount];
  for (std::size_t i = 0; i < kInkCount; ++i) {
    palette[i] = {kInkColours[i].red, kInkColours[i].green, kInkColours[i].blue};
  }
  png_set_PLTE(writer.png(), writer.info(), palette, static_cast<int>(picture.inkCount()));
  const png_uint_32 perMetre = (picture.pixelsPerInch() * 10000 + 127) / 254;
  png_set_pHYs(writer.png(), writer.info(), perMetre, perMetre, PNG_RESOLUTION_METER);
  png_write_info(writer.png(), writer.info());
  png_set_packing(writer.png());
}

// An error in libpng jumps back to setjmp() and skips destructors, so this function has no local
// variable that needs one.
bool writeAll(const PngWriter& writer, Picture& picture, std::FILE* file,
              std::vector<std::uint8_t>& row) {
  if (setjmp(png_jmpbuf(writer.png())) != 0) return false;
  png_init_io(writer.png(), file);
  writeHeader(writer, picture);
  for (std::uint64_t y = 0; y < picture.height(); ++y) {
    picture.paintRow(y, row);
    png_write_row(writer.png(), row.data());
  }
  png_write_end(writer.png(), nullptr);
  return true;
}

std::string writeTo(std::FILE* file, Picture& picture) {
  if (picture.height() > PNG_UINT_31_MAX) return "the picture is too long for a PNG";
  std::string error;
  const PngWriter writer(&error);
  if (!writer.usable()) return "libpng cannot be set up";
  std::vector<std::uint8_t> row(picture.width());
  if (!writeAll(writer, picture, file, row)) return error;
  return {};
}

}  // namespace

std::string writePng(Picture& picture, const std::string& path) {
  FilePtr file(std::fopen(path.c_str(), "wb"));
  if (file == nullptr) return std::strerror(errno);
  std::string error = writeTo(file.get(), picture);
  if (std::fclose(file.release()) != 0 && error.empty()) error = std::strerror(errno);
  std::error_code ignored;
  if (!error.empty() && std::filesystem::is_regular_file(path, ignored)) std::remove(path.c_str());
  return error;
}

}  // namespace wren::preview
