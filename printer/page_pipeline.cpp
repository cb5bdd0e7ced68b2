// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pipeline of a page through the printer object: blank edges measured, debug image,
// dots, debug image, printer commands.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "common/log.h"
#include "printer/blank_lines.h"
#include "printer/debug_image_path.h"
#include "printer/page_dots.h"
#include "printer/wren_printer.h"

using wren::printer::kDitheredImageName;
using wren::printer::kOriginImageName;
using wren::printer::PageMemory;

namespace {

constexpr unsigned char kTrimTop = 2;
constexpr unsigned char kTrimBottom = 8;

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

// The buffer of the printer for the time of one page. A page that is printed from within
// doPrintImage finds the printer without one and gets another.
class BorrowedPage {
 public:
  explicit BorrowedPage(PageMemory& owner) : owner_(owner), memory_(std::move(owner)) {}
  BorrowedPage(const BorrowedPage&) = delete;
  BorrowedPage& operator=(const BorrowedPage&) = delete;
  ~BorrowedPage() { owner_ = std::move(memory_); }

  bool resize(std::size_t bytes) { return memory_.resize(bytes); }
  unsigned char* data() { return memory_.data(); }

 private:
  PageMemory& owner_;
  PageMemory memory_;
};

wren::printer::DotOptions dotOptionsOf(const WrenPrinter& printer, DitherType type) {
  wren::printer::DotOptions options;
  options.brightness = printer.getBrightness();
  options.contrast = printer.getContrast();
  options.rotate180 = printer.isRotate180Print();
  options.mirror = printer.isMirrorPrint();
  options.stencil = printer.getHalftoneType() == QVDithering;
  // Printed output depends on the value being the method number, although most names are those
  // of another method: `Ordered` runs Burkes, `Burkes` runs Stucki, and so on.
  options.method = type;
  options.negative = printer.isNegativePrint();
  return options;
}

// The arithmetic is unsigned: the widest pages are less than four below the largest int.
void logStencil(int width, int bytesPerLine, int length) {
  wrenLogCommon(0, "QVDithered with stride(%d), BytesPerLine(%d)",
                static_cast<int>((static_cast<unsigned>(width) + 3) / 4 * 4), bytesPerLine);
  wrenLogCommon(0, "PageProcess filled anser with length(%d)!", length);
}

bool asksCancel(const void* printer) {
  return static_cast<const WrenPrinter*>(printer)->isCancelled();
}

}  // namespace

void WrenPrinter::printImage(const unsigned char* data, unsigned long bytesPerLine,
                             unsigned long height, unsigned long width) {
  const wren::printer::ScratchPage scratch(bytesPerLine * height);
  if (!scratch.isThere()) return;
  const BlankEdges edges = measureBlankEdges(*this, data, bytesPerLine, height, width);
  if (isCancelled()) return;
  savePageImage(kOriginImageName, data, bytesPerLine, height, width, 8);
  const PrintedPage page = {data, bytesPerLine, height, width, edges.top, edges.bottom};
  if (canPrintBands(page)) {
    printPackedPage(page);
  } else {
    printBytePage(page);
  }
}

bool WrenPrinter::canPrintBands(const PrintedPage& page) const {
  constexpr unsigned long kMaxSize = INT32_MAX;
  return takesBands() && skipRightPixels_ < page.width && page.width <= kMaxSize &&
         page.height <= kMaxSize && page.bytesPerLine == page.width &&
         wren::printer::canMakeDotRows(dotOptionsOf(*this, halftoneType_), page.levels());
}

void WrenPrinter::printPackedPage(const PrintedPage& page) {
  using namespace wren::printer;
  if (!dotRows_.resize(kDotRingRows * page.width) || !bands_.resize(page.width, page.rows())) {
    return;
  }
  if (isCancelled()) return;
  useQVDithering_ = halftoneType_ == QVDithering;
  BandPacker packer(dotRows_.data(), kDotRingRows, page.firstRow(), bands_);
  makeDotRows(dotOptionsOf(*this, halftoneType_), page.levels(),
              static_cast<std::uint32_t>(page.firstRow() + page.rows()),
              {dotRows_.data(), packer.finishedRows()}, {asksCancel, this});
  if (isCancelled()) return;
  if (useQVDithering_) {
    const auto length = static_cast<int>(static_cast<unsigned>(page.height * page.width));
    logStencil(static_cast<int>(page.width), static_cast<int>(page.bytesPerLine), length);
  }
  logPage(page, bands_.band(0));
  saveBandImage(bands_);
  if (!isCancelled()) printBands(bands_);
}

void WrenPrinter::printBytePage(const PrintedPage& page) {
  BorrowedPage dots(dotsPage_);
  if (!dots.resize(page.bytesPerLine * page.height) || isCancelled()) return;
  clearRowTails(dots.data(), page.bytesPerLine, page.height, page.width);
  PageProcess(halftoneType_, page.data, static_cast<int>(page.bytesPerLine),
              static_cast<int>(page.width), static_cast<int>(page.height), dots.data());
  if (isCancelled()) return;
  const unsigned char* first = dots.data() + page.firstRow() * page.bytesPerLine;
  logPage(page, first);
  savePageImage(kDitheredImageName, first, page.bytesPerLine, page.rows(), page.width, 1);
  if (!isCancelled()) doPrintImage(first, page.bytesPerLine, page.rows(), page.width);
}

void WrenPrinter::logPage(const PrintedPage& page, const unsigned char* dots) const {
  wrenLogCommon(0,
                "printImage: p(%lu), width(%lu), height(%lu), w(%lu), topBlanks(%lu), "
                "bottomBlanks(%lu), h_fixed(%lu)",
                static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(dots)),
                page.bytesPerLine, page.height, page.width, page.topBlanks, page.bottomBlanks,
                page.rows());
}

long WrenPrinter::PageProcess(DitherType type, const unsigned char* data, int bytesPerLine,
                              int width, int height, unsigned char* out) {
  const auto length = static_cast<int>(static_cast<unsigned>(height) * bytesPerLine);
  useQVDithering_ = halftoneType_ == QVDithering;
  if (isCancelled()) return length;
  // Negative numbers count as 0, which no page has.
  const auto positive = [](int value) { return static_cast<unsigned>(std::max(value, 0)); };
  const wren::printer::GreyPage page = {data, positive(bytesPerLine), positive(width),
                                        positive(height)};
  if (!makePageDots(dotOptionsOf(*this, type), page, out, {asksCancel, this})) {
    wrenLogCommon(4, "cximage.CreateFromArray with grey failed!");
  }
  if (useQVDithering_ && !isCancelled()) logStencil(width, bytesPerLine, length);
  return length;
}

int WrenPrinter::GrayToMono(int bytesPerLine, int height, unsigned char* buffer) {
  const auto rowBytes = static_cast<unsigned long>(bytesPerLine);
  const unsigned long skip = skipRightPixels_;
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
