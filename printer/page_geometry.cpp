// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/page_geometry.h"

#include <cstring>

namespace wren::printer {
namespace {

constexpr std::uint64_t kLargestPageBytes = 0x7FFFFFFF;
constexpr double kTooManyPixels = 18446744073709551616.0;  // 2^64

}  // namespace

std::uint64_t printableWidthPx(double maxMediaWidthPt, std::uint32_t horizontalDpi) {
  const double pixels = maxMediaWidthPt / 72.0 * horizontalDpi;
  // Written so that NaN fails the test too.
  const bool counts = pixels >= 0.0 && pixels < kTooManyPixels;
  return counts ? static_cast<std::uint64_t>(pixels) : 0;
}

std::uint64_t excessPx(std::uint32_t bytesPerLine, std::uint64_t printableWidthPx) {
  const bool tooWide = printableWidthPx > 0 && bytesPerLine > printableWidthPx;
  return tooWide ? bytesPerLine - printableWidthPx : 0;
}

const char* pageFault(const PageGeometry& page, std::uint64_t excessPx) {
  if (page.widthPx == 0) return "its width is 0";
  if (page.widthPx > page.bytesPerLine) return "its width is greater than its bytes per line";
  const std::uint64_t bytes = static_cast<std::uint64_t>(page.heightPx) * page.bytesPerLine;
  if (bytes > kLargestPageBytes) return "it has more than 2147483647 bytes";
  if (excessPx >= page.widthPx) return "the printable width leaves nothing of it";
  return nullptr;
}

void centrePage(std::uint8_t* pixels, const PageGeometry& page, std::uint64_t excessPx) {
  if (excessPx == 0) return;
  const std::uint64_t shift = excessPx / 2;
  for (std::uint32_t row = 0; row < page.heightPx; ++row) {
    std::uint8_t* start = pixels + static_cast<std::uint64_t>(row) * page.bytesPerLine;
    std::memmove(start, start + shift, page.bytesPerLine - excessPx);
  }
}

}  // namespace wren::printer
