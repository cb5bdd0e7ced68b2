// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/image_dump.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "common/log.h"
#include "common/own_file.h"
#include "printer/dot_kernels.h"
#include "printer/dump_names.h"
#include "printer/wren_printer.h"

namespace {

constexpr std::size_t kGreyPaletteBytes = 1024;
constexpr std::array<unsigned char, 8> kDotPalette = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0};

// Numbers the debug images of the process, opened or not.
long dumpCounter = 0;

class LittleEndianWriter {
 public:
  explicit LittleEndianWriter(unsigned char* start) : at(start) {}
  void put16(std::uint32_t value) { put(value, 2); }
  void put32(std::uint32_t value) { put(value, 4); }

 private:
  void put(std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) *at++ = static_cast<unsigned char>(value >> (8 * i));
  }
  unsigned char* at;
};

// Writes all parts, going on after a short write, until one fails.
void writeAll(int descriptor, iovec* parts, int count) {
  while (count > 0) {
    const ssize_t written = writev(descriptor, parts, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    auto rest = static_cast<std::size_t>(written);
    while (count > 0 && rest >= parts->iov_len) {
      rest -= parts->iov_len;
      ++parts;
      --count;
    }
    if (count > 0) {
      parts->iov_base = static_cast<unsigned char*>(parts->iov_base) + rest;
      parts->iov_len -= rest;
    }
  }
}

std::array<unsigned char, kGreyPaletteBytes> greyPalette() {
  std::array<unsigned char, kGreyPaletteBytes> palette = {};
  for (std::size_t level = 0; level < 256; ++level) {
    std::fill_n(palette.begin() + static_cast<long>(4 * level), 3,
                static_cast<unsigned char>(level));
  }
  return palette;
}

iovec part(const unsigned char* bytes, std::size_t count) {
  return {const_cast<unsigned char*>(bytes), count};  // writev only reads
}

// The pixels go out as they lie in memory, top row first and without padding;
// viewers therefore show the image upside down, and sheared at odd widths.
void writeGreyDump(int descriptor, const DumpSource& source) {
  const auto header = bmpHeader(source.width, source.height, 8);
  const auto palette = greyPalette();
  std::array<iovec, 3> parts = {part(header.data(), header.size()),
                                part(palette.data(), palette.size()),
                                part(source.data, source.width * source.height)};
  writeAll(descriptor, parts.data(), 3);
}

// All rows of the file, bottom row first. False without memory.
bool packRows(const DumpSource& source, std::size_t rowBytes, PageMemory& rows) {
  if (!rows.resize(source.height * rowBytes)) return false;
  for (unsigned long row = 0; row < source.height; ++row) {
    packDumpRow(source.data + (source.height - 1 - row) * source.bytesPerLine, source.bytesPerLine,
                rows.data() + row * rowBytes, rowBytes);
  }
  return true;
}

void writeDotDump(int descriptor, const DumpSource& source, unsigned short bitsPerPixel,
                  PageMemory& rows) {
  const auto header = bmpHeader(source.width, source.height, bitsPerPixel);
  const auto rowBytes = static_cast<std::size_t>(bmpRowBytes(source.width, bitsPerPixel));
  const bool arePacked = packRows(source, rowBytes, rows);
  std::array<iovec, 3> parts = {
      part(header.data(), header.size()),
      part(kDotPalette.data(), bitsPerPixel == 1 ? kDotPalette.size() : 0),
      part(rows.data(), arePacked ? source.height * rowBytes : 0)};
  writeAll(descriptor, parts.data(), 3);
}

}  // namespace

std::int32_t bmpRowBytes(unsigned long width, unsigned short bitsPerPixel) {
  const auto pixels = static_cast<std::uint32_t>(width);
  const std::uint32_t bytes = bitsPerPixel == 8 ? pixels : (pixels + 7) / 8;
  return static_cast<std::int32_t>((bytes + 3) / 4 * 4);
}

std::array<unsigned char, kBmpHeaderBytes> bmpHeader(unsigned long width, unsigned long height,
                                                     unsigned short bitsPerPixel) {
  const bool grey = bitsPerPixel == 8;
  const std::uint32_t pixelOffset = grey ? 1078 : 62;
  const std::uint32_t colours = grey ? 256 : 0;
  const std::uint32_t imageBytes = static_cast<std::uint32_t>(bmpRowBytes(width, bitsPerPixel)) *
                                   static_cast<std::uint32_t>(height);
  std::array<unsigned char, kBmpHeaderBytes> header = {};
  LittleEndianWriter out(header.data());
  out.put16(0x4D42);  // "BM"
  out.put32(pixelOffset + imageBytes);
  out.put32(0);
  out.put32(pixelOffset);
  out.put32(40);  // size of the rest of the header
  out.put32(static_cast<std::uint32_t>(width));
  out.put32(static_cast<std::uint32_t>(height));
  out.put16(1);  // planes
  out.put16(grey ? 8 : 1);
  out.put32(0);  // not compressed
  out.put32(imageBytes);
  out.put32(0);
  out.put32(0);
  out.put32(colours);
  out.put32(colours);
  return header;
}

void packDumpRow(const unsigned char* pixels, unsigned long count, unsigned char* row,
                 std::size_t rowBytes) {
  const std::size_t packed = std::min<std::size_t>(count, 8 * rowBytes);
  packWhiteBits(pixels, packed, row);
  const std::size_t used = (packed + 7) / 8;
  std::memset(row + used, 0, rowBytes - used);
}

void writeDump(int descriptor, const DumpSource& source, unsigned short bitsPerPixel,
               PageMemory& rows) {
  if (bitsPerPixel == 8) {
    writeGreyDump(descriptor, source);
  } else {
    writeDotDump(descriptor, source, bitsPerPixel, rows);
  }
}

void WrenPrinter::saveImage(const unsigned char* data, unsigned long bytesPerLine,
                            unsigned long height, unsigned long width,
                            unsigned short bitsPerPixel) {
  const std::time_t now = std::time(nullptr);
  std::tm when = {};
  localtime_r(&now, &when);
  const DumpPath path = formatDumpPath(imageFileFormat, when, dumpCounter++);
  const int descriptor = openOwnFile(path.text);
  if (descriptor < 0) {
    wrenWriteMessage("WrenPrinter::saveImage: unable to open the file %s\n", path.text);
    return;
  }
  writeDump(descriptor, {data, bytesPerLine, height, width}, bitsPerPixel, dumpRows);
  close(descriptor);
}
