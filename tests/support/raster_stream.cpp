// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/raster_stream.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>

namespace wren_test {

namespace {

// The header has four texts of 64 characters, then 81 numbers of 4 bytes.
constexpr std::size_t kFirstNumber = 256;
constexpr std::size_t kNumbers = 81;

void swapWord(char* word) {
  std::reverse(word, word + 4);
}

std::string headerBytes(const cups_page_header2_t& header, bool swapped) {
  std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
  for (std::size_t i = 0; swapped && i < kNumbers; ++i) swapWord(&bytes[kFirstNumber + 4 * i]);
  return bytes;
}

bool machineIsBigEndian() {
  const std::uint32_t one = 1;
  char first = 0;
  std::memcpy(&first, &one, 1);
  return first == 0;
}

bool isSwapped(RasterKind kind) {
  return kind == RasterKind::kV3Swapped || (kind == RasterKind::kPwg && !machineIsBigEndian());
}

bool isCompressed(RasterKind kind) {
  return kind == RasterKind::kV2 || kind == RasterKind::kPwg;
}

std::size_t runLength(const std::string& row, std::size_t at) {
  std::size_t end = at + 1;
  while (end < row.size() && end - at < 128 && row[end] == row[at]) ++end;
  return end - at;
}

// PackBits-like: `count - 1` and one byte for a run, `257 - count` and the bytes for a sequence
// without runs.
std::string compressedRow(const std::string& row) {
  std::string out;
  for (std::size_t at = 0; at < row.size();) {
    const std::size_t run = runLength(row, at);
    if (run > 1) {
      out += static_cast<char>(run - 1);
      out += row[at];
      at += run;
      continue;
    }
    std::size_t end = at + 1;
    while (end < row.size() && end - at < 127 && runLength(row, end) == 1) ++end;
    if (end - at == 1) {
      out += '\0';
    } else {
      out += static_cast<char>(257 - (end - at));
    }
    out.append(row, at, end - at);
    at = end;
  }
  return out;
}

// Equal consecutive rows are written once, after their count minus one.
std::string compressedPixels(const std::string& pixels, std::size_t rowBytes) {
  std::string out;
  for (std::size_t at = 0; at < pixels.size();) {
    const std::string row = pixels.substr(at, rowBytes);
    std::size_t same = 1;
    while (same < 256 && at + (same + 1) * rowBytes <= pixels.size() &&
           pixels.compare(at + same * rowBytes, rowBytes, row) == 0) {
      ++same;
    }
    out += static_cast<char>(same - 1);
    out += compressedRow(row);
    at += same * rowBytes;
  }
  return out;
}

}  // namespace

cups_page_header2_t greyHeader(unsigned width, unsigned height, unsigned dpi) {
  cups_page_header2_t header = {};
  header.HWResolution[0] = dpi;
  header.HWResolution[1] = dpi;
  header.NumCopies = 1;
  header.PageSize[0] = width * 72 / std::max(dpi, 1U);
  header.PageSize[1] = height * 72 / std::max(dpi, 1U);
  header.cupsWidth = width;
  header.cupsHeight = height;
  header.cupsBitsPerColor = 8;
  header.cupsBitsPerPixel = 8;
  header.cupsBytesPerLine = width;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  return header;
}

RasterPage greyPage(const std::vector<std::string>& rows, unsigned dpi) {
  RasterPage page;
  const auto width = rows.empty() ? 0U : static_cast<unsigned>(rows.front().size());
  page.header = greyHeader(width, static_cast<unsigned>(rows.size()), dpi);
  for (const auto& row : rows) page.pixels += row;
  return page;
}

RasterPage flatPage(unsigned width, unsigned height, std::uint8_t level, unsigned dpi) {
  return {greyHeader(width, height, dpi),
          std::string(static_cast<std::size_t>(width) * height, static_cast<char>(level))};
}

RasterPage noisePage(unsigned width, unsigned height, unsigned seed, unsigned dpi) {
  RasterPage page = flatPage(width, height, 0, dpi);
  std::mt19937 numbers(seed);
  for (auto& pixel : page.pixels) pixel = static_cast<char>(numbers() & 0xFF);
  return page;
}

std::string rasterSync(RasterKind kind) {
  if (kind == RasterKind::kPwg) return "RaS2";
  std::uint32_t word = kind == RasterKind::kV2 ? CUPS_RASTER_SYNCv2 : CUPS_RASTER_SYNC;
  std::string bytes(4, '\0');
  std::memcpy(bytes.data(), &word, 4);
  if (kind == RasterKind::kV3Swapped) swapWord(bytes.data());
  return bytes;
}

std::string rasterPage(RasterKind kind, const RasterPage& page) {
  cups_page_header2_t header = page.header;
  if (kind == RasterKind::kPwg) std::strcpy(header.MediaClass, "PwgRaster");
  return headerBytes(header, isSwapped(kind)) +
         (isCompressed(kind) ? compressedPixels(page.pixels, header.cupsBytesPerLine)
                             : page.pixels);
}

std::string rasterStream(RasterKind kind, const std::vector<RasterPage>& pages) {
  std::string stream = rasterSync(kind);
  for (const auto& page : pages) stream += rasterPage(kind, page);
  return stream;
}

bool cupsPassesOn(const RasterPage& page) {
  FILE* file = std::tmpfile();
  const std::string bytes = rasterStream(RasterKind::kV3, {page});
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fflush(file);
  std::rewind(file);
  cups_raster_t* stream = cupsRasterOpen(fileno(file), CUPS_RASTER_READ);
  cups_page_header2_t header = {};
  const bool passed = cupsRasterReadHeader2(stream, &header) != 0 &&
                      header.cupsWidth == page.header.cupsWidth &&
                      header.cupsBytesPerLine == page.header.cupsBytesPerLine &&
                      header.cupsHeight == page.header.cupsHeight;
  cupsRasterClose(stream);
  std::fclose(file);
  return passed;
}

}  // namespace wren_test
