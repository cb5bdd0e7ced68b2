// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "fuzz/raster_fields.h"

#include <cups/raster.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

namespace fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kMostPages = 4;
constexpr std::uint32_t kMostPageBytes = 1 << 13;
// Of a page whose header states more than can be written.
constexpr std::size_t kMostRowBytes = 1 << 12;
constexpr std::uint32_t kMostRows = 1 << 13;
constexpr std::size_t kMostStreamBytes = std::size_t{1} << 16;

enum class HeaderForm { kFirstVersion, kWhole, kApple };

struct StreamForm {
  std::string_view sync;
  bool isBigEndian;
  bool isCompressed;
  HeaderForm header;
};

// Version 3, version 2 (big-endian: PWG), version 1, each in both byte orders; Apple.
constexpr StreamForm kForms[] = {
    {"3SaR", false, false, HeaderForm::kWhole},
    {"RaS3", true, false, HeaderForm::kWhole},
    {"2SaR", false, true, HeaderForm::kWhole},
    {"RaS2", true, true, HeaderForm::kWhole},
    {"tSaR", false, false, HeaderForm::kFirstVersion},
    {"RaSt", true, false, HeaderForm::kFirstVersion},
    {"UNIRAST", true, true, HeaderForm::kApple},
};

struct PageFields {
  std::uint32_t bytesPerLine;
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t dpi;
  std::uint32_t bitsPerPixel;
  std::uint32_t colorSpace;
  std::uint32_t colorOrder;
  std::uint32_t copies;
};

std::uint32_t oneOf(std::span<const std::uint32_t> values, Input& input) {
  return values[input.below(static_cast<std::uint32_t>(values.size()))];
}

// Mostly the header of a page that prints: each bit of the first byte leaves one field to the
// input.
PageFields fieldsFrom(Input& input) {
  constexpr std::uint32_t kWidths[] = {1, 7, 8, 9, 16, 23, 72, 384, 575, 576, 577, 639, 832};
  constexpr std::uint32_t kPadding[] = {0, 0, 0, 0, 0, 1, 8, UINT32_MAX};
  constexpr std::uint32_t kResolutions[] = {203, 203, 203, 180, 100, 300, 1, 0};
  constexpr std::uint32_t kBits[] = {8, 8, 8, 8, 8, 8, 1, 24};
  constexpr std::uint32_t kSpaces[] = {CUPS_CSPACE_K, CUPS_CSPACE_W, CUPS_CSPACE_SW,
                                       CUPS_CSPACE_RGB};
  const std::uint8_t wild = input.byte();
  const auto value = [&](int bit, std::uint32_t usual) {
    return (wild >> bit & 1) == 0 ? usual : input.word();
  };
  PageFields fields = {};
  fields.width = value(0, oneOf(kWidths, input));
  fields.bytesPerLine = value(1, fields.width + oneOf(kPadding, input));
  const std::uint32_t rows = kMostPageBytes / std::max(fields.bytesPerLine, 1U);
  fields.height = value(2, 1 + input.byte() % std::max(rows, 1U));
  fields.dpi = value(3, oneOf(kResolutions, input));
  fields.bitsPerPixel = value(4, oneOf(kBits, input));
  fields.colorSpace = value(5, oneOf(kSpaces, input));
  fields.colorOrder = value(6, CUPS_ORDER_CHUNKED);
  fields.copies = value(7, 1);
  return fields;
}

class StreamWriter {
 public:
  explicit StreamWriter(Input& input) : input_(input) {}

  Bytes operator()() {
    const std::uint32_t missing = input_.below(4) == 3 ? input_.byte() : 0;
    begin();
    for (int i = 0; i < kMostPages && input_.left() > 0; ++i) addPage(fieldsFrom(input_));
    out_.resize(out_.size() - std::min<std::size_t>(out_.size(), missing));
    return std::move(out_);
  }

 private:
  void begin() {
    const std::uint32_t choice = input_.below(std::size(kForms) + 1);
    form_ = kForms[choice % std::size(kForms)];
    out_.assign(form_.sync.begin(), form_.sync.end());
    if (choice == std::size(kForms)) out_ = input_.bytes(4);
    // The zero byte of the text, and the number of pages.
    if (form_.header == HeaderForm::kApple) out_.insert(out_.end(), {0, 0, 0, 0, kMostPages});
  }

  void addPage(const PageFields& fields) {
    addHeader(fields);
    Bytes row;
    const std::size_t end = out_.size() + kMostStreamBytes / kMostPages;
    const std::uint32_t height = std::min(fields.height, kMostRows);
    for (std::uint32_t y = 0; y < height && out_.size() < end;) {
      makeRow(row, std::min<std::size_t>(fields.bytesPerLine, kMostRowBytes));
      // What the input does not describe is blank.
      const std::uint32_t rows = input_.left() == 0 ? 256 : 1 + input_.below(16);
      y += addRows(row, std::min(rows, height - y));
    }
  }

  void addHeader(const PageFields& fields) {
    if (form_.header == HeaderForm::kApple) {
      addAppleHeader(fields);
      return;
    }
    const bool isFirst = form_.header == HeaderForm::kFirstVersion;
    header_.assign(isFirst ? sizeof(cups_page_header_t) : sizeof(cups_page_header2_t), 0);
    constexpr std::string_view kClass = "PwgRaster";
    if (form_.isBigEndian && form_.isCompressed) {
      std::copy(kClass.begin(), kClass.end(), header_.begin());
    }
    put(offsetof(cups_page_header2_t, HWResolution), fields.dpi);
    put(offsetof(cups_page_header2_t, HWResolution) + 4, fields.dpi);
    put(offsetof(cups_page_header2_t, NumCopies), fields.copies);
    put(offsetof(cups_page_header2_t, cupsWidth), fields.width);
    put(offsetof(cups_page_header2_t, cupsHeight), fields.height);
    put(offsetof(cups_page_header2_t, cupsBitsPerColor), std::min(fields.bitsPerPixel, 8U));
    put(offsetof(cups_page_header2_t, cupsBitsPerPixel), fields.bitsPerPixel);
    put(offsetof(cups_page_header2_t, cupsBytesPerLine), fields.bytesPerLine);
    put(offsetof(cups_page_header2_t, cupsColorOrder), fields.colorOrder);
    put(offsetof(cups_page_header2_t, cupsColorSpace), fields.colorSpace);
    if (!isFirst) put(offsetof(cups_page_header2_t, cupsNumColors), 1);
    out_.insert(out_.end(), header_.begin(), header_.end());
  }

  // 32 bytes: bits per pixel, colour space, ..., and from byte 12 on the size and the resolution.
  void addAppleHeader(const PageFields& fields) {
    header_.assign(32, 0);
    header_[0] = static_cast<std::uint8_t>(fields.bitsPerPixel);
    header_[1] = fields.colorSpace == CUPS_CSPACE_RGB ? 1 : 0;
    put(12, fields.width);
    put(16, fields.height);
    put(20, fields.dpi);
    out_.insert(out_.end(), header_.begin(), header_.end());
  }

  void put(std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
      const std::size_t shift = 8 * (form_.isBigEndian ? 3 - i : i);
      header_[offset + i] = static_cast<std::uint8_t>(value >> shift);
    }
  }

  // Blank, of one level, of many, or like the row before.
  void makeRow(Bytes& row, std::size_t bytes) {
    const std::uint8_t choice = input_.byte();
    switch (choice % 4) {
      case 0:
        row.assign(bytes, 0);
        break;
      case 1:
        row.assign(bytes, input_.byte());
        break;
      case 2:
        row = input_.filling(bytes);
        break;
      default:
        row.resize(bytes);
        break;
    }
    // Another length than the header says.
    if (choice >= 252) row.resize(input_.byte());
  }

  // @return how many rows the stream has now more, by its own words.
  std::uint32_t addRows(const Bytes& row, std::uint32_t rows) {
    if (!form_.isCompressed) {
      for (std::uint32_t i = 0; i < rows; ++i) out_.insert(out_.end(), row.begin(), row.end());
      return rows;
    }
    out_.push_back(static_cast<std::uint8_t>(rows - 1));
    for (std::size_t at = 0; at < row.size();) at += addRun(row, at);
    return rows;
  }

  // `count - 1` and the pixel of a run, or `257 - count` and the pixels of a sequence; an input may
  // state another number. @return count.
  std::size_t addRun(const Bytes& row, std::size_t at) {
    const std::uint8_t choice = input_.byte();
    const auto from = row.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end =
        std::find_if(from, row.end(), [&](std::uint8_t next) { return next != *from; });
    const auto equal = std::min<std::size_t>(static_cast<std::size_t>(end - from), 128);
    const bool isRun = equal > 1 || choice == 0;
    const std::size_t count =
        isRun ? equal : std::min<std::size_t>(2 + choice % 126, row.size() - at);
    const std::size_t stated = isRun || count == 1 ? count - 1 : 257 - count;
    out_.push_back(choice < 224 ? static_cast<std::uint8_t>(stated) : input_.byte());
    out_.insert(out_.end(), from, isRun ? from + 1 : from + static_cast<std::ptrdiff_t>(count));
    return count;
  }

  Input& input_;
  StreamForm form_ = {};
  Bytes header_;
  Bytes out_;
};

}  // namespace

std::vector<std::uint8_t> rasterFromFields(Input& input) {
  return StreamWriter(input)();
}

}  // namespace fuzz
