// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/direct_dots.h"

#include <cstdint>
#include <cstring>

#include "bitmap/cximage.h"
#include "dither/dither_page.h"
#include "dither/level_rows.h"
#include "dither/tone_table.h"
#include "stencil/stencil_page.h"

namespace {

using wren::dither::LevelRows;
using wren::dither::ToneTable;
using DitherPage = wren::dither::Page;

// Asks for all the memory that the bitmap would take and touches none of it, so that a
// page too large for the bitmap meets the same end on both ways.
bool bitmapHasRoom(const GreyPage& page, bool isTurned) {
  CxImage grey;
  CxImage turned;
  CxImage dots;
  return grey.Create(page.width, page.height, 8, 0) != nullptr &&
         (!isTurned || turned.Create(page.width, page.height, 8, 0) != nullptr) &&
         dots.Create(page.width, page.height, 1, 0) != nullptr;
}

// The options of the printer in the terms of the dither kernels. False when the page
// has to go through the bitmap.
bool describe(const WrenPrinter& printer, const GreyPage& page, unsigned char* out, ToneTable& tone,
              DitherPage& job) {
  const bool rotated = printer.isRotate180Print();
  const bool mirrored = printer.isMirrorPrint();
  const bool toned = printer.getBrightness() != 0 || printer.getContrast() != 0;
  if (page.pixels == nullptr || page.pixels == out || page.strideBytes < page.width ||
      !bitmapHasRoom(page, rotated || mirrored)) {
    return false;
  }
  if (toned) {
    tone = wren::dither::makeToneTable(printer.getBrightness() * 5, printer.getContrast() * 2);
  }
  const auto stride = static_cast<std::ptrdiff_t>(page.strideBytes);
  // Half a turn reads the rows from the last one up, each of them from its right end.
  job.levels = rotated ? page.pixels + (page.height - 1) * page.strideBytes : page.pixels;
  job.levelStrideBytes = rotated ? -stride : stride;
  job.mirrored = rotated != mirrored;
  job.dots = out;
  job.dotStrideBytes = stride;
  job.width = page.width;
  job.height = page.height;
  job.tone = toned ? tone.data() : nullptr;
  job.inverted = printer.isNegativePrint();
  return true;
}

// Lays the toned and turned levels out where the dots will be.
void fillLevels(const DitherPage& job) {
  const LevelRows rows(job);
  for (std::size_t y = 0; y < job.height; ++y) {
    const std::uint8_t* levels = rows.levels(y);
    if (levels != rows.dots(y)) std::memcpy(rows.dots(y), levels, job.width);
  }
}

bool isCancelled(const void* printer) {
  return static_cast<const WrenPrinter*>(printer)->isCancelled();
}

void invert(unsigned char* dots, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) dots[i] ^= 0xFF;
}

}  // namespace

bool makeDotsDirectly(const WrenPrinter& printer, long method, const GreyPage& page,
                      unsigned char* out) {
  ToneTable tone;
  DitherPage job;
  return describe(printer, page, out, tone, job) && wren::dither::ditherPage(method, job);
}

bool makeStencilDotsDirectly(const WrenPrinter& printer, const GreyPage& page, unsigned char* out) {
  ToneTable tone;
  DitherPage job;
  if (page.strideBytes != page.width || !describe(printer, page, out, tone, job)) return false;
  const std::uint8_t* levels = page.pixels;
  if (job.tone != nullptr || job.levels != page.pixels || job.mirrored) {
    fillLevels(job);
    levels = out;
  }
  const auto stride = static_cast<std::ptrdiff_t>(page.strideBytes);
  wren::stencil::stencilPage(levels, stride, static_cast<int>(page.width),
                             static_cast<int>(page.height), out, stride,
                             wren::CancelCheck(isCancelled, &printer));
  if (job.inverted) invert(out, page.strideBytes * page.height);
  return true;
}
