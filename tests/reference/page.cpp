// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/reference/page.h"

#include <cstddef>

#include "tests/reference/cximage.h"
#include "tests/reference/stencil.h"

namespace reference {

namespace {

constexpr int kStencilType = 8;
constexpr std::uint8_t kTrimTop = 2;
constexpr std::uint8_t kTrimBottom = 8;

void append(Bytes& to, const Bytes& bytes) {
  to.insert(to.end(), bytes.begin(), bytes.end());
}

void appendLittleEndian(Bytes& to, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) to.push_back(static_cast<std::uint8_t>((value >> (8 * i)) & 255));
}

bool isBlankRow(const std::uint8_t* row, std::uint64_t count) {
  for (std::uint64_t x = 0; x < count; ++x) {
    if (row[x] != 0) return false;
  }
  return true;
}

std::uint64_t countedBytes(std::uint64_t bytesPerLine, std::uint64_t skipPixels) {
  return skipPixels <= bytesPerLine ? bytesPerLine - skipPixels : bytesPerLine;
}

std::string text(std::uint64_t value) {
  return std::to_string(value);
}

}  // namespace

Bytes bytesOf(const std::vector<Command>& commands) {
  Bytes result;
  for (const Command& command : commands) append(result, command.bytes);
  return result;
}

// Blank rows --------------------------------------------------------------------

std::uint64_t wrenImageCountBlankLinesFromBack(const std::uint8_t* data, std::uint64_t bytesPerLine,
                                               std::uint64_t height, std::uint64_t skipPixels,
                                               std::uint64_t stride) {
  const std::uint64_t c = countedBytes(bytesPerLine, skipPixels);
  for (std::uint64_t row = height; row > 0; --row) {
    if (!isBlankRow(data + (row - 1) * stride, c)) return row;
  }
  return 0;
}

std::uint64_t wrenImageCountBlankLinesFromFront(const std::uint8_t* data,
                                                std::uint64_t bytesPerLine, std::uint64_t height,
                                                std::uint64_t skipPixels, std::uint64_t stride) {
  const std::uint64_t c = countedBytes(bytesPerLine, skipPixels);
  for (std::uint64_t k = 0; k < height; ++k) {
    // The row after the last one counts as blank.
    const bool blank = k + 1 == height || isBlankRow(data + (k + 1) * stride, c);
    if (!blank) return k;
  }
  return height;
}

// Packing -----------------------------------------------------------------------

int GrayToMono(int bytesPerLine, int height, std::uint8_t* buffer, std::uint64_t skipRightPixels,
               std::vector<std::string>& log) {
  const auto s = static_cast<std::int64_t>(skipRightPixels);
  const int wb = s != 0 && skipRightPixels < static_cast<std::uint64_t>(bytesPerLine)
                     ? static_cast<int>(bytesPerLine - s)
                     : bytesPerLine;
  log.push_back("DEBUG:GrayToMono, bpl(" + std::to_string(bytesPerLine) + "), h(" +
                std::to_string(height) + "), skipPixels(" + std::to_string(s) + "), wb(" +
                std::to_string(wb) + ")");
  int n = 0;
  for (int y = 0; y < height; ++y) {
    int bits = 0;
    for (int x = 0; x < wb; ++x) {
      if (buffer[y * bytesPerLine + x] != 0) bits |= 0x80 >> (x % 8);
      if (x % 8 == 7) {
        buffer[n] = static_cast<std::uint8_t>(bits);
        n += 1;
        bits = 0;
      }
    }
    if (wb % 8 != 0) {
      buffer[n] = static_cast<std::uint8_t>(bits);
      n += 1;
    }
  }
  return n;
}

// Halftoning --------------------------------------------------------------------

namespace {

void stencilDots(const CxImage& bitmap, const PageOptions& options, int bytesPerLine, int width,
                 int height, Bytes& out, std::vector<std::string>& log) {
  for (std::int64_t y = 0; y < height; ++y) {
    for (std::int64_t x = 0; x < width; ++x)
      out[static_cast<std::size_t>(y * bytesPerLine + x)] = bitmap.GetPixelIndex(x, y);
  }
  QVImage page(width, height, QV_IMG_GRAY, out.data());
  const QVImage result = qvTattooDithering(page);
  const int stride = ((result.width + 3) / 4) * 4;
  log.push_back("DEBUG:QVDithered with stride(" + std::to_string(stride) + "), BytesPerLine(" +
                std::to_string(bytesPerLine) + ")");
  const std::int64_t resultBytes = std::int64_t{result.width} * result.height;
  for (std::int64_t y = 0; y < height; ++y) {
    for (std::int64_t x = 0; x < width; ++x) {
      // Printed output depends on this: the result is read with the stride of the page, not with
      // its own. Beyond its end it is 0.
      const std::int64_t at = y * bytesPerLine + x;
      int v = at < resultBytes ? result.data[at] : 0;
      if (options.negative) v = v ^ 0xFF;
      out[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(v);
    }
  }
  const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(height) *
                                                static_cast<std::uint32_t>(bytesPerLine));
  log.push_back("DEBUG:PageProcess filled anser with length(" + std::to_string(length) + ")!");
}

void classicDots(CxImage& bitmap, const PageOptions& options, int type, int bytesPerLine, int width,
                 int height, Bytes& out) {
  bitmap.Dither(type);
  bitmap.IncreaseBpp(8);
  for (std::int64_t y = 0; y < height; ++y) {
    for (std::int64_t x = 0; x < width; ++x) {
      int v = bitmap.GetPixelIndex(x, y);
      if (v == 1) v = 255;
      if (options.negative) v = v ^ 0xFF;
      out[static_cast<std::size_t>(y * bytesPerLine + x)] = static_cast<std::uint8_t>(v);
    }
  }
}

}  // namespace

std::int64_t PageProcess(const PageOptions& options, int type, const std::uint8_t* data,
                         int bytesPerLine, int width, int height, Bytes& out,
                         std::vector<std::string>& log) {
  const bool useQVDithering = options.halftoneType == kStencilType;
  CxImage bitmap;
  if (!bitmap.CreateFromArray(data, static_cast<std::uint32_t>(width),
                              static_cast<std::uint32_t>(height), 8,
                              static_cast<std::uint32_t>(bytesPerLine), false))
    log.push_back("CRIT:cximage.CreateFromArray with grey failed!");
  if (options.brightness != 0 || options.contrast != 0)
    bitmap.Light(options.brightness * 5, options.contrast * 2);
  if (options.rotate180) bitmap.Rotate180(nullptr);
  if (options.mirror) bitmap.Mirror();
  if (useQVDithering) {
    stencilDots(bitmap, options, bytesPerLine, width, height, out, log);
  } else {
    classicDots(bitmap, options, type, bytesPerLine, width, height, out);
  }
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(height) *
                                   static_cast<std::uint32_t>(bytesPerLine));
}

// Debug images --------------------------------------------------------------------

namespace {

std::uint64_t dumpRowBytes(std::uint64_t width, unsigned bitsPerPixel) {
  const std::uint64_t r = bitsPerPixel == 8 ? width : (width + 7) / 8;
  return ((r + 3) / 4) * 4;
}

Bytes dumpHeader(std::uint64_t height, std::uint64_t width, unsigned bitsPerPixel) {
  const bool grey = bitsPerPixel == 8;
  const std::uint64_t offset = grey ? 1078 : 62;
  const std::uint64_t imageSize = dumpRowBytes(width, bitsPerPixel) * height;
  Bytes header = {0x42, 0x4D};
  appendLittleEndian(header, offset + imageSize, 4);
  appendLittleEndian(header, 0, 2);
  appendLittleEndian(header, 0, 2);
  appendLittleEndian(header, offset, 4);
  appendLittleEndian(header, 40, 4);
  appendLittleEndian(header, width, 4);
  appendLittleEndian(header, height, 4);
  appendLittleEndian(header, 1, 2);
  appendLittleEndian(header, grey ? 8 : 1, 2);
  appendLittleEndian(header, 0, 4);
  appendLittleEndian(header, imageSize, 4);
  appendLittleEndian(header, 0, 4);
  appendLittleEndian(header, 0, 4);
  appendLittleEndian(header, grey ? 256 : 0, 4);
  appendLittleEndian(header, grey ? 256 : 0, 4);
  return header;
}

// One row of a bilevel page: 1 for white, cut or zero-padded to `rowBytes`.
Bytes dumpRow(const std::uint8_t* row, std::uint64_t bytesPerLine, std::uint64_t rowBytes) {
  Bytes packed;
  int bits = 0;
  for (std::uint64_t x = 0; x < bytesPerLine; ++x) {
    if (row[x] == 0) bits |= 0x80 >> (x % 8);
    if (x % 8 == 7) {
      packed.push_back(static_cast<std::uint8_t>(bits));
      bits = 0;
    }
  }
  if (bytesPerLine % 8 != 0) {
    bits |= 0xFF >> (bytesPerLine % 8);
    packed.push_back(static_cast<std::uint8_t>(bits));
  }
  packed.resize(rowBytes, 0);
  return packed;
}

}  // namespace

Bytes saveImage(const std::uint8_t* data, std::uint64_t bytesPerLine, std::uint64_t height,
                std::uint64_t width, unsigned bitsPerPixel) {
  Bytes file = dumpHeader(height, width, bitsPerPixel);
  if (bitsPerPixel == 8) {
    for (unsigned i = 0; i < 256; ++i) {
      const auto level = static_cast<std::uint8_t>(i);
      append(file, {level, level, level, 0});
    }
    file.insert(file.end(), data, data + width * height);
    return file;
  }
  if (bitsPerPixel == 1) append(file, {0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x00});
  for (std::uint64_t y = height; y > 0; --y)
    append(file,
           dumpRow(data + (y - 1) * bytesPerLine, bytesPerLine, dumpRowBytes(width, bitsPerPixel)));
  return file;
}

// Bands ---------------------------------------------------------------------------

namespace {

std::uint8_t columnOf(const std::uint8_t* band, std::uint64_t lines, std::uint64_t width,
                      std::uint64_t column) {
  int byte = 0;
  for (std::uint64_t r = 0; r < lines; ++r) {
    if (band[r * width + column] != 0) byte |= 1 << (7 - r);
  }
  return static_cast<std::uint8_t>(byte);
}

}  // namespace

std::vector<Command> doPrintImage(const PageOptions& options, const std::uint8_t* data,
                                  std::uint64_t height, std::uint64_t width) {
  std::vector<Command> commands = {{{0x1B, 0x3C}, "page start"}};
  const std::uint64_t k = width - options.skipRightPixels;
  const std::uint8_t m = options.hwResolutionX > 100 ? 1 : 0;
  std::uint64_t remaining = height;
  std::uint64_t lines = 8;
  const std::uint8_t* band = data;
  while (remaining > 0) {
    if (remaining < lines) lines = remaining;
    Bytes image = {0x1B, 0x2A, m, static_cast<std::uint8_t>(k & 255),
                   static_cast<std::uint8_t>((k >> 8) & 255)};
    for (std::uint64_t c = 0; c < k; ++c) image.push_back(columnOf(band, lines, width, c));
    commands.push_back({image, "rows " + text(height - remaining) + " to " +
                                   text(height - remaining + lines - 1) + ", " + text(k) +
                                   " columns"});
    commands.push_back(
        {{0x1B, 0x4A, static_cast<std::uint8_t>((2 * lines) & 255)}, "feed " + text(2 * lines)});
    remaining -= lines;
    band += lines * width;
  }
  return commands;
}

// The page ------------------------------------------------------------------------

PageResult printImage(const PageOptions& options, const std::uint8_t* data,
                      std::uint64_t bytesPerLine, std::uint64_t height, std::uint64_t width) {
  PageResult result;
  std::uint64_t topBlanks = 0;
  std::uint64_t bottomBlanks = 0;
  if ((options.removeBlankEdges & kTrimBottom) != 0)
    bottomBlanks = wrenImageCountBlankLinesFromBack(data, bytesPerLine, height,
                                                    options.skipRightPixels, width);
  if ((options.removeBlankEdges & kTrimTop) != 0)
    topBlanks = wrenImageCountBlankLinesFromFront(data, bytesPerLine, height,
                                                  options.skipRightPixels, width);
  result.dumps.push_back({"origin", saveImage(data, bytesPerLine, height, width, 8)});

  Bytes out(bytesPerLine * height, 0);
  PageProcess(options, options.halftoneType, data, static_cast<int>(bytesPerLine),
              static_cast<int>(width), static_cast<int>(height), out, result.log);
  const std::uint8_t* p = out.data();
  std::uint64_t hFixed = height;
  if (bottomBlanks > topBlanks) {
    hFixed = bottomBlanks - topBlanks;
    p += topBlanks * bytesPerLine;
  }
  result.log.push_back("DEBUG:printImage: p(ADDRESS), width(" + text(bytesPerLine) + "), height(" +
                       text(height) + "), w(" + text(width) + "), topBlanks(" + text(topBlanks) +
                       "), bottomBlanks(" + text(bottomBlanks) + "), h_fixed(" + text(hFixed) +
                       ")");
  result.dumps.push_back({"dithered", saveImage(p, bytesPerLine, hFixed, width, 1)});
  result.commands = doPrintImage(options, p, hFixed, width);
  return result;
}

}  // namespace reference
