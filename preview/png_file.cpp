// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/png_file.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

#include "common/handles.h"
#include "common/memory_file.h"

namespace wren::preview {
namespace {

// The text chunk by which our pictures are known.
constexpr char kSoftwareKey[] = "Software";
constexpr char kSoftware[] = "Wren";

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

// What is written: the format and one row after the other.
class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual std::uint64_t width() const = 0;
  virtual std::uint64_t height() const = 0;
  virtual void writeFormat(const PngWriter& writer) const = 0;
  /// The pixels of row `y`, a byte each; valid until the next call.
  virtual const std::uint8_t* row(std::uint64_t y) = 0;
};

void writeSize(const PngWriter& writer, const RowSource& source, int bitDepth, int colourType) {
  png_set_IHDR(writer.png(), writer.info(), static_cast<png_uint_32>(source.width()),
               static_cast<png_uint_32>(source.height()), bitDepth, colourType, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
}

void writeSoftware(const PngWriter& writer) {
  // libpng takes pointers to characters that may change, and copies them.
  char key[sizeof kSoftwareKey];
  char value[sizeof kSoftware];
  std::memcpy(key, kSoftwareKey, sizeof key);
  std::memcpy(value, kSoftware, sizeof value);
  png_text text = {};
  text.compression = PNG_TEXT_COMPRESSION_NONE;
  text.key = key;
  text.text = value;
  png_set_text(writer.png(), writer.info(), &text, 1);
}

class PaperRows final : public RowSource {
 public:
  PaperRows(PaperPicture& picture, std::uint64_t maxRows)
      : picture_(picture), height_(std::min(picture.height(), maxRows)), row_(picture.width()) {}

  std::uint64_t width() const override { return picture_.width(); }
  std::uint64_t height() const override { return height_; }

  void writeFormat(const PngWriter& writer) const override {
    writeSize(writer, *this, picture_.inkCount() <= 2 ? 1 : 4, PNG_COLOR_TYPE_PALETTE);
    png_color palette[kInkCount];
    for (std::size_t i = 0; i < kInkCount; ++i) {
      palette[i] = {kInkColours[i].red, kInkColours[i].green, kInkColours[i].blue};
    }
    png_set_PLTE(writer.png(), writer.info(), palette, static_cast<int>(picture_.inkCount()));
    const png_uint_32 perMetre = (picture_.pixelsPerInch() * 10000 + 127) / 254;
    png_set_pHYs(writer.png(), writer.info(), perMetre, perMetre, PNG_RESOLUTION_METER);
  }

  const std::uint8_t* row(std::uint64_t y) override {
    picture_.paintRow(y, row_);
    return row_.data();
  }

 private:
  PaperPicture& picture_;
  std::uint64_t height_;
  std::vector<std::uint8_t> row_;
};

class GreyRows final : public RowSource {
 public:
  explicit GreyRows(const Picture& picture) : picture_(picture) {}

  std::uint64_t width() const override { return picture_.widthPx; }
  std::uint64_t height() const override { return picture_.heightPx; }
  void writeFormat(const PngWriter& writer) const override {
    writeSize(writer, *this, 8, PNG_COLOR_TYPE_GRAY);
  }
  const std::uint8_t* row(std::uint64_t y) override {
    return picture_.row(static_cast<std::uint32_t>(y));
  }

 private:
  const Picture& picture_;
};

// An error in libpng jumps back to setjmp() and skips destructors, so this function has no local
// variable that needs one.
bool writeAll(const PngWriter& writer, RowSource& source, std::FILE* file, const PngRules& rules) {
  if (setjmp(png_jmpbuf(writer.png())) != 0) return false;
  if (rules.isFast) png_set_compression_level(writer.png(), 1);
  png_init_io(writer.png(), file);
  // The default limit of libpng is a million rows; a roll of paper can exceed it.
  png_set_user_limits(writer.png(), PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  source.writeFormat(writer);
  writeSoftware(writer);
  png_write_info(writer.png(), writer.info());
  png_set_packing(writer.png());
  for (std::uint64_t y = 0; y < source.height(); ++y) {
    if (rules.cancel.isCancelled()) png_error(writer.png(), "cancelled");
    png_write_row(writer.png(), source.row(y));
  }
  png_write_end(writer.png(), nullptr);
  return true;
}

std::string writeTo(std::FILE* file, RowSource& source, const PngRules& rules) {
  if (source.height() > PNG_UINT_31_MAX) return "the picture is too long for a PNG";
  std::string error;
  const PngWriter writer(&error);
  if (!writer.usable()) return "libpng cannot be set up";
  if (!writeAll(writer, source, file, rules)) return error;
  return {};
}

std::string writeRows(RowSource& source, const std::string& path, const PngRules& rules) {
  // x: fails if there is a file, a link or anything else of this name.
  FilePtr file(std::fopen(path.c_str(), rules.keepExisting ? "wbx" : "wb"));
  if (file == nullptr) return std::strerror(errno);
  std::string error = writeTo(file.get(), source, rules);
  if (std::fclose(file.release()) != 0 && error.empty()) error = std::strerror(errno);
  std::error_code ignored;
  if (!error.empty() && std::filesystem::is_regular_file(path, ignored)) std::remove(path.c_str());
  return error;
}

}  // namespace

// The chunk stands before the pixels.
bool isOwnPng(const std::string& path) {
  constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
  const std::string chunk = std::string("tEXt") + kSoftwareKey + '\0' + kSoftware;
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return false;
  const FilePtr file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) return false;
  char head[512];
  const std::string_view text(head, std::fread(head, 1, sizeof head, file.get()));
  return text.starts_with(kSignature) && text.find(chunk) != text.npos;
}

std::string writePng(PaperPicture& picture, const std::string& path, const PngRules& rules) {
  PaperRows rows(picture, rules.maxRows);
  return writeRows(rows, path, rules);
}

std::string writePng(const Picture& picture, const std::string& path) {
  GreyRows rows(picture);
  return writeRows(rows, path, {});
}

std::string pngBytes(PaperPicture& picture, const PngRules& rules) {
  PaperRows rows(picture, rules.maxRows);
  MemoryFile memory;
  if (!writeTo(memory.stream(), rows, rules).empty()) return {};
  return memory.take();
}

}  // namespace wren::preview
