// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/direct_dots.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>

#include "bitmap/cximage.h"
#include "bitmap/dither_kernels.h"

namespace {

using Tone = std::array<std::uint8_t, 256>;

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

// What the tone options make of each of the 256 levels.
bool fillTone(int brightness, int contrast, Tone& tone) {
  std::iota(tone.begin(), tone.end(), static_cast<std::uint8_t>(0));
  CxImage ramp;
  if (!ramp.CreateFromArray(tone.data(), 256, 1, 8, 256, false)) return false;
  ramp.Light(brightness * 5, contrast * 2);
  std::copy_n(ramp.GetBits(), tone.size(), tone.begin());
  return true;
}

}  // namespace

bool makeDotsDirectly(const WrenPrinter& printer, long method, const GreyPage& page,
                      unsigned char* out) {
  const bool rotated = printer.isRotate180Print();
  const bool mirrored = printer.isMirrorPrint();
  if (page.pixels == nullptr || page.pixels == out || page.strideBytes < page.width ||
      !bitmapHasRoom(page, rotated || mirrored)) {
    return false;
  }
  Tone tone;
  const bool toned = printer.getBrightness() != 0 || printer.getContrast() != 0;
  if (toned && !fillTone(printer.getBrightness(), printer.getContrast(), tone)) return false;

  DitherPage job;
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
  return ditherPage(method, job);
}
