// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/debug_image.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "printer/dot_kernels.h"

namespace wren::printer {
namespace {

constexpr std::size_t kGreyPaletteBytes = 1024;
constexpr std::array<std::uint8_t, 8> kDotPalette = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0};

class LittleEndianWriter {
 public:
  explicit LittleEndianWriter(std::uint8_t* start) : at_(start) {}
  void put16(std::uint32_t value) { put(value, 2); }
  void put32(std::uint32_t value) { put(value, 4); }

 private:
  void put(std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) *at_++ = static_cast<std::uint8_t>(value >> (8 * i));
  }
  std::uint8_t* at_;
};

// Writes all parts; goes on after a short write. False after an error.
bool writeAll(int descriptor, iovec* parts, int count) {
  while (count > 0) {
    const ssize_t written = writev(descriptor, parts, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    auto rest = static_cast<std::size_t>(written);
    while (count > 0 && rest >= parts->iov_len) {
      rest -= parts->iov_len;
      ++parts;
      --count;
    }
    if (count > 0) {
      parts->iov_base = static_cast<std::uint8_t*>(parts->iov_base) + rest;
      parts->iov_len -= rest;
    }
  }
  return true;
}

std::array<std::uint8_t, kGreyPaletteBytes> greyPalette() {
  std::array<std::uint8_t, kGreyPaletteBytes> palette = {};
  for (std::size_t level = 0; level < 256; ++level) {
    std::fill_n(palette.begin() + static_cast<long>(4 * level), 3,
                static_cast<std::uint8_t>(level));
  }
  return palette;
}

iovec part(const std::uint8_t* bytes, std::size_t count) {
  return {const_cast<std::uint8_t*>(bytes), count};  // writev only reads
}

// The pixels as they are in memory, top row first and without padding. Viewers therefore show
// the image upside down, and sheared at odd widths.
void writeGreyImage(int descriptor, const ImageSource& source) {
  const auto header = bmpHeader(source.width, source.height, 8);
  const auto palette = greyPalette();
  std::array<iovec, 3> parts = {part(header.data(), header.size()),
                                part(palette.data(), palette.size()),
                                part(source.data, source.width * source.height)};
  writeAll(descriptor, parts.data(), 3);
}

// Packs `count` pixels into bits: 1 (white) for a pixel of 0, 0 (black) for a dot, the unused
// low bits of the last byte 1. The rest of `bits` becomes 0; pixels that do not fit are left
// out.
void packPixels(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits,
                std::size_t bitBytes) {
  const std::size_t packed = std::min(count, 8 * bitBytes);
  packWhiteBits(pixels, packed, bits);
  const std::size_t used = (packed + 7) / 8;
  std::memset(bits + used, 0, bitBytes - used);
}

// The row of the source that is row `index` of the file: the bottom row comes first.
const std::uint8_t* fileRow(const ImageSource& source, unsigned long index) {
  return source.data + (source.height - 1 - index) * source.bytesPerLine;
}

void writeRowsOneByOne(int descriptor, const ImageSource& source, std::size_t rowBytes) {
  std::array<std::uint8_t, 4096> bits;
  for (unsigned long row = 0; row < source.height; ++row) {
    const std::uint8_t* pixels = fileRow(source, row);
    for (std::size_t done = 0; done < rowBytes; done += bits.size()) {
      const std::size_t count = std::min(bits.size(), rowBytes - done);
      const std::size_t first = std::min<std::size_t>(8 * done, source.bytesPerLine);
      packPixels(pixels + first, source.bytesPerLine - first, bits.data(), count);
      iovec piece = part(bits.data(), count);
      if (!writeAll(descriptor, &piece, 1)) return;
    }
  }
}

// Header, palette and packed rows; the rows may be missing. False after an error.
bool writeDotImageParts(int descriptor, unsigned long width, unsigned long height,
                        unsigned short bitsPerPixel, const std::uint8_t* rows,
                        std::size_t rowsBytes) {
  const auto header = bmpHeader(width, height, bitsPerPixel);
  std::array<iovec, 3> parts = {
      part(header.data(), header.size()),
      part(kDotPalette.data(), bitsPerPixel == 1 ? kDotPalette.size() : 0), part(rows, rowsBytes)};
  return writeAll(descriptor, parts.data(), 3);
}

void writeDotImage(int descriptor, const ImageSource& source, unsigned short bitsPerPixel,
                   PageMemory& rows) {
  const auto rowBytes = static_cast<std::size_t>(bmpRowBytes(source.width, bitsPerPixel));
  const bool hasRows = rows.resize(source.height * rowBytes);
  for (unsigned long row = 0; hasRows && row < source.height; ++row) {
    packPixels(fileRow(source, row), source.bytesPerLine, rows.data() + row * rowBytes, rowBytes);
  }
  const bool isWritten = writeDotImageParts(descriptor, source.width, source.height, bitsPerPixel,
                                            rows.data(), hasRows ? source.height * rowBytes : 0);
  if (isWritten && !hasRows) writeRowsOneByOne(descriptor, source, rowBytes);
}

// Turns band `index` into the rows of the file that it fills, the bottom row of the page first.
// `rows` has `rowBytes` bytes for each row of the band, for its bottom row first.
void unpackBand(const DotBands& bands, std::size_t index, std::size_t rowBytes,
                std::uint8_t* rows) {
  const std::size_t count = bands.rowsOfBand(index);
  const std::size_t used = (bands.width() + 7) / 8;
  std::array<std::uint8_t*, kRowsPerBand> bits = {};
  for (std::size_t row = 0; row < count; ++row) {
    bits[row] = rows + (count - 1 - row) * rowBytes;
    std::memset(bits[row] + used, 0, rowBytes - used);
  }
  unpackColumns(bands.band(index), bands.width(), count, bits);
}

}  // namespace

std::int32_t bmpRowBytes(unsigned long width, unsigned short bitsPerPixel) {
  const auto pixels = static_cast<std::uint32_t>(width);
  const std::uint32_t bytes = bitsPerPixel == 8 ? pixels : (pixels + 7) / 8;
  return static_cast<std::int32_t>((bytes + 3) / 4 * 4);
}

std::array<std::uint8_t, kBmpHeaderBytes> bmpHeader(unsigned long width, unsigned long height,
                                                    unsigned short bitsPerPixel) {
  const bool grey = bitsPerPixel == 8;
  const std::uint32_t pixelOffset = grey ? 1078 : 62;
  const std::uint32_t colours = grey ? 256 : 0;
  const std::uint32_t imageBytes = static_cast<std::uint32_t>(bmpRowBytes(width, bitsPerPixel)) *
                                   static_cast<std::uint32_t>(height);
  std::array<std::uint8_t, kBmpHeaderBytes> header = {};
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

void writeImage(int descriptor, const ImageSource& source, unsigned short bitsPerPixel,
                PageMemory& rows) {
  if (bitsPerPixel == 8) {
    writeGreyImage(descriptor, source);
  } else {
    writeDotImage(descriptor, source, bitsPerPixel, rows);
  }
}

void writeBandImage(int descriptor, const DotBands& bands, PageMemory& rows) {
  const auto rowBytes = static_cast<std::size_t>(bmpRowBytes(bands.width(), 1));
  const bool hasRows = rows.resize(bands.rows() * rowBytes);
  std::size_t done = 0;
  for (std::size_t i = bands.bandCount(); hasRows && i-- > 0; done += bands.rowsOfBand(i)) {
    unpackBand(bands, i, rowBytes, rows.data() + done * rowBytes);
  }
  const bool isWritten = writeDotImageParts(descriptor, bands.width(), bands.rows(), 1, rows.data(),
                                            hasRows ? done * rowBytes : 0);
  if (!isWritten || hasRows || !rows.resize(kRowsPerBand * rowBytes)) return;
  for (std::size_t i = bands.bandCount(); i-- > 0;) {
    unpackBand(bands, i, rowBytes, rows.data());
    iovec piece = part(rows.data(), bands.rowsOfBand(i) * rowBytes);
    if (!writeAll(descriptor, &piece, 1)) return;
  }
}

}  // namespace wren::printer
