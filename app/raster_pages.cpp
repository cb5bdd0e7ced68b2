// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/raster_pages.h"

#include "app/page_sink.h"

namespace wren::app {
namespace {

constexpr unsigned kWidestPx = 4096;
constexpr unsigned kGreyBits = 8;

bool isGrey(cups_cspace_t space) {
  return space == CUPS_CSPACE_W || space == CUPS_CSPACE_SW;
}

std::string sizeText(unsigned width, unsigned height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

}  // namespace

std::string rasterFault(const cups_page_header2_s& header, const PageTarget& target) {
  if (header.cupsBitsPerPixel != kGreyBits || header.cupsBitsPerColor != kGreyBits ||
      (header.cupsColorSpace != CUPS_CSPACE_K && !isGrey(header.cupsColorSpace))) {
    return "the page is not in 8-bit grey or black";
  }
  if (header.HWResolution[0] != kDotsPerInch || header.HWResolution[1] != kDotsPerInch) {
    return "the page has " + sizeText(header.HWResolution[0], header.HWResolution[1]) +
           " dots per inch, not 203 x 203";
  }
  if (header.cupsWidth == 0 || header.cupsHeight == 0 || header.cupsWidth > kWidestPx ||
      header.cupsHeight > target.maxHeightPx || header.cupsBytesPerLine != header.cupsWidth) {
    return "a page of " + sizeText(header.cupsWidth, header.cupsHeight) +
           " pixels cannot be printed: at most " + sizeText(kWidestPx, target.maxHeightPx);
  }
  return {};
}

void toInk(const cups_page_header2_s& header, std::span<std::uint8_t> row) {
  if (!isGrey(header.cupsColorSpace)) return;
  for (std::uint8_t& level : row) level = static_cast<std::uint8_t>(255 - level);
}

}  // namespace wren::app
