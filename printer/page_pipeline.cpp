// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The way of a page through the printer object: measured, made into dots, dumped and
// encoded. Page-sized buffers are what this file is careful with: each is released as
// soon as the next step no longer needs it.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "bitmap/cximage.h"
#include "common/log.h"
#include "printer/blank_lines.h"
#include "printer/direct_dots.h"
#include "printer/dump_names.h"
#include "printer/wren_printer.h"
#include "stencil/qv_image.h"
#include "stencil/tattoo_dithering.h"

namespace {

constexpr unsigned char kTrimTop = 2;
constexpr unsigned char kTrimBottom = 8;
constexpr unsigned char kDot = 255;

struct BlankEdges {
  unsigned long top = 0;     ///< rows above the content
  unsigned long bottom = 0;  ///< where the content ends
};

BlankEdges measureBlankEdges(const WrenPrinter& printer, const unsigned char* data,
                             unsigned long bytesPerLine, unsigned long height,
                             unsigned long width) {
  const unsigned char wanted = printer.getRemoveBlankEdges();
  const unsigned long skip = printer.getSkipRightPixels();
  BlankEdges edges;
  if ((wanted & kTrimBottom) != 0) {
    edges.bottom = wrenImageCountBlankLinesFromBack(data, bytesPerLine, height, skip, width);
  }
  if ((wanted & kTrimTop) != 0) {
    edges.top = wrenImageCountBlankLinesFromFront(data, bytesPerLine, height, skip, width);
  }
  return edges;
}

// The bytes of a row that no halftone method writes.
void clearRowTails(unsigned char* page, unsigned long bytesPerLine, unsigned long height,
                   unsigned long width) {
  if (bytesPerLine <= width) return;
  for (unsigned long row = 0; row < height; ++row) {
    std::memset(page + row * bytesPerLine + width, 0, bytesPerLine - width);
  }
}

// Tone first, then rotation, then mirroring.
void adjustPage(const WrenPrinter& printer, CxImage& page) {
  const int brightness = printer.getBrightness();
  const int contrast = printer.getContrast();
  if (brightness != 0 || contrast != 0) page.Light(brightness * 5, contrast * 2);
  if (printer.isRotate180Print() && !printer.isCancelled()) page.Rotate180(nullptr);
  if (printer.isMirrorPrint() && !printer.isCancelled()) page.Mirror();
}

// Eight pixels for each byte of a 1-bit row, the first in its highest bit.
using DotsOfByte = std::array<std::array<unsigned char, 8>, 256>;

constexpr DotsOfByte makeDotsOfByte() {
  DotsOfByte table = {};
  for (unsigned bits = 0; bits < 256; ++bits) {
    for (unsigned x = 0; x < 8; ++x) table[bits][x] = (bits & (0x80U >> x)) != 0 ? kDot : 0;
  }
  return table;
}

constexpr DotsOfByte kDotsOfByte = makeDotsOfByte();

void readBits(const unsigned char* bits, std::size_t width, unsigned char flip,
              unsigned char* out) {
  for (std::size_t x = 0; x < width; x += 8) {
    const auto& dots = kDotsOfByte[bits[x / 8] ^ flip];
    std::memcpy(out + x, dots.data(), std::min<std::size_t>(width - x, 8));
  }
}

// A page that could not be dithered for want of memory still holds its levels.
void readLevels(const unsigned char* levels, std::size_t width, unsigned char flip,
                unsigned char* out) {
  for (std::size_t x = 0; x < width; ++x) {
    const unsigned char dot = levels[x] == 1 ? kDot : levels[x];
    out[x] = static_cast<unsigned char>(dot ^ flip);
  }
}

// Reads the dithered page straight from its bits: widening the bitmap to a byte per
// pixel first would give the same dots and cost one more page of memory.
void readDitheredPage(CxImage& page, std::size_t bytesPerLine, std::size_t width,
                      std::size_t height, unsigned char flip, unsigned char* out) {
  const bool isDithered = page.GetNumColors() == 2;
  for (std::size_t y = 0; y < height; ++y) {
    unsigned char* row = out + y * bytesPerLine;
    const unsigned char* source = page.GetBits(static_cast<std::uint32_t>(y));
    if (source == nullptr) {
      std::memset(row, flip, width);
    } else if (isDithered) {
      readBits(source, width, flip, row);
    } else {
      readLevels(source, width, flip, row);
    }
  }
}

// The levels of the page as one run of width * height bytes taken from rows that are
// bytesPerLine apart; bytes between the rows are 0.
void copyLevels(CxImage& page, std::size_t bytesPerLine, QVImage& levels) {
  const auto width = static_cast<std::size_t>(levels.width);
  const std::size_t count = width * static_cast<std::size_t>(levels.height);
  if (bytesPerLine != width) std::memset(levels.data, 0, count);
  for (std::size_t y = 0; y * bytesPerLine < count; ++y) {
    const std::size_t start = y * bytesPerLine;
    std::memcpy(levels.data + start, page.GetBits(static_cast<std::uint32_t>(y)),
                std::min(width, count - start));
  }
}

// Consumes the page, so that its memory is free while the stencil method runs.
QVImage stencilDots(CxImage& page, int bytesPerLine, int width, int height) {
  QVImage levels(width, height, QV_IMG_GRAY);
  copyLevels(page, static_cast<std::size_t>(bytesPerLine), levels);
  page.Destroy();
  return qvTattooDithering(levels);
}

// The result is read with the distance of the page's rows, not with its own; what
// would lie past its end is 0.
void readStencilDots(const QVImage& dots, std::size_t bytesPerLine, unsigned char flip,
                     unsigned char* out) {
  const auto width = static_cast<std::size_t>(dots.width);
  const auto height = static_cast<std::size_t>(dots.height);
  const std::size_t count = width * height;
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t start = std::min(y * bytesPerLine, count);
    const std::size_t there = std::min(width, count - start);
    unsigned char* row = out + y * bytesPerLine;
    for (std::size_t x = 0; x < there; ++x) {
      row[x] = static_cast<unsigned char>(dots.data[start + x] ^ flip);
    }
    std::memset(row + there, flip, width - there);
  }
}

// Without a bitmap every level reads as 0, and a page of one level has no dots. The
// stencil method itself never meets such a page: it may be longer or wider than the
// method can count.
void drawNoDots(std::size_t bytesPerLine, std::size_t width, std::size_t height, unsigned char flip,
                unsigned char* out) {
  for (std::size_t y = 0; y < height; ++y) std::memset(out + y * bytesPerLine, flip, width);
}

void drawStencilDots(CxImage& page, int bytesPerLine, int width, int height, unsigned char flip,
                     unsigned char* out) {
  const auto stride = static_cast<std::size_t>(bytesPerLine);
  if (page.IsValid()) {
    readStencilDots(stencilDots(page, bytesPerLine, width, height), stride, flip, out);
  } else {
    drawNoDots(stride, static_cast<std::size_t>(width), static_cast<std::size_t>(height), flip,
               out);
  }
}

// The stride is unsigned on its way: the widest pages are less than four below the
// largest int.
void logStencil(int width, int bytesPerLine, int length) {
  wrenLogCommon(0, "QVDithered with stride(%d), BytesPerLine(%d)",
                static_cast<int>((static_cast<unsigned>(width) + 3) / 4 * 4), bytesPerLine);
  wrenLogCommon(0, "PageProcess filled anser with length(%d)!", length);
}

}  // namespace

void WrenPrinter::printImage(const unsigned char* data, unsigned long bytesPerLine,
                             unsigned long height, unsigned long width) {
  const ScratchPage scratch(bytesPerLine * height);
  if (!scratch.isThere()) return;
  const BlankEdges edges = measureBlankEdges(*this, data, bytesPerLine, height, width);
  if (isCancelled()) return;
  useImageFileFormat(kOriginDumpFormat);
  saveImage(data, bytesPerLine, height, width, 8);
  if (!dotsPage.resize(bytesPerLine * height) || isCancelled()) return;
  clearRowTails(dotsPage.data(), bytesPerLine, height, width);
  PageProcess(halftoneType, data, static_cast<int>(bytesPerLine), static_cast<int>(width),
              static_cast<int>(height), dotsPage.data());
  if (isCancelled()) return;
  printDots(dotsPage.data(), bytesPerLine, height, width, edges.top, edges.bottom);
}

// The counts of the page as received apply to the dots unchanged, rotated or not. Only
// content that ends below its top is trimmed: printed output depends on it.
void WrenPrinter::printDots(const unsigned char* dots, unsigned long bytesPerLine,
                            unsigned long height, unsigned long width, unsigned long topBlanks,
                            unsigned long bottomBlanks) {
  const unsigned char* p = dots;
  unsigned long h_fixed = height;
  if (bottomBlanks > topBlanks) {
    h_fixed = bottomBlanks - topBlanks;
    p += topBlanks * bytesPerLine;
  }
  wrenLogCommon(0,
                "printImage: p(%lu), width(%lu), height(%lu), w(%lu), topBlanks(%lu), "
                "bottomBlanks(%lu), h_fixed(%lu)",
                static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(p)), bytesPerLine,
                height, width, topBlanks, bottomBlanks, h_fixed);
  useImageFileFormat(kDitheredDumpFormat);
  saveImage(p, bytesPerLine, h_fixed, width, 1);
  if (!isCancelled()) doPrintImage(p, bytesPerLine, h_fixed, width);
}

long WrenPrinter::PageProcess(DitherType type, const unsigned char* data, int bytesPerLine,
                              int width, int height, unsigned char* out) {
  const auto stride = static_cast<std::size_t>(bytesPerLine);
  const auto length = static_cast<int>(static_cast<unsigned>(height) * bytesPerLine);
  const unsigned char flip = negativePrint ? 0xFF : 0;
  useQVDithering = halftoneType == QVDithering;
  const GreyPage received = {data, stride, static_cast<unsigned>(width),
                             static_cast<unsigned>(height)};
  if (isCancelled()) return length;
  if (useQVDithering && makeStencilDotsDirectly(*this, received, out)) {
    if (!isCancelled()) logStencil(width, bytesPerLine, length);
    return length;
  }
  if (!useQVDithering && makeDotsDirectly(*this, type, received, out)) return length;
  CxImage page;
  if (!page.CreateFromArray(data, static_cast<std::uint32_t>(width),
                            static_cast<std::uint32_t>(height), 8,
                            static_cast<std::uint32_t>(bytesPerLine), false)) {
    wrenLogCommon(4, "cximage.CreateFromArray with grey failed!");
  }
  adjustPage(*this, page);
  if (isCancelled()) {
    page.Destroy();
  } else if (useQVDithering) {
    drawStencilDots(page, bytesPerLine, width, height, flip, out);
    logStencil(width, bytesPerLine, length);
  } else {
    // Printed output depends on the value going through as it is: the names of the
    // types are one step off from the methods that run.
    page.Dither(type);
    readDitheredPage(page, stride, static_cast<std::size_t>(width),
                     static_cast<std::size_t>(height), flip, out);
    page.Destroy();
  }
  return length;
}

int WrenPrinter::GrayToMono(int bytesPerLine, int height, unsigned char* buffer) {
  const auto rowBytes = static_cast<unsigned long>(bytesPerLine);
  const unsigned long skip = skipRightPixels;
  const unsigned long used = skip != 0 && skip < rowBytes ? rowBytes - skip : rowBytes;
  wrenLogCommon(0, "GrayToMono, bpl(%d), h(%d), skipPixels(%d), wb(%d)", bytesPerLine, height,
                static_cast<int>(skip), static_cast<int>(used));
  unsigned char* packed = buffer;
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = buffer + static_cast<unsigned long>(y) * rowBytes;
    for (unsigned long x = 0; x < used; x += 8) {
      unsigned bits = 0;
      for (unsigned long i = x; i < std::min(x + 8, used); ++i) {
        bits |= row[i] != 0 ? 0x80U >> (i - x) : 0;
      }
      *packed++ = static_cast<unsigned char>(bits);
    }
  }
  return static_cast<int>(packed - buffer);
}
