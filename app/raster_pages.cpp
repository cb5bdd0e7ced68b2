// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/raster_pages.h"

#include <cstring>

#include "app/page_sink.h"

namespace wren::app {
namespace {

constexpr unsigned kWidestPx = 4096;
constexpr unsigned kGreyBits = 8;

// As a number: a client may send one that the type does not have.
template <typename Enumeration>
int numberOf(const Enumeration& value) {
  int number;
  static_assert(sizeof number == sizeof value);
  std::memcpy(&number, &value, sizeof number);
  return number;
}

bool isGrey(int space) {
  return space == CUPS_CSPACE_W || space == CUPS_CSPACE_SW;
}

std::string sizeText(unsigned width, unsigned height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

}  // namespace

std::string rasterFault(const cups_page_header2_s& header, const PageTarget& target) {
  const int space = numberOf(header.cupsColorSpace);
  if (header.cupsBitsPerPixel != kGreyBits || header.cupsBitsPerColor != kGreyBits ||
      numberOf(header.cupsColorOrder) != CUPS_ORDER_CHUNKED ||
      (space != CUPS_CSPACE_K && !isGrey(space))) {
    return "the page is not in 8-bit grey or black";
  }
  if (header.HWResolution[0] != kDotsPerInch || header.HWResolution[1] != kDotsPerInch) {
    return "the page has " + sizeText(header.HWResolution[0], header.HWResolution[1]) +
           " dots per inch, not 203 x 203";
  }
  if (header.cupsWidth == 0 || header.cupsHeight == 0 || header.cupsWidth > kWidestPx ||
      header.cupsHeight > target.maxHeightPx) {
    return "a page of " + sizeText(header.cupsWidth, header.cupsHeight) +
           " pixels cannot be printed: at most " + sizeText(kWidestPx, target.maxHeightPx);
  }
  if (header.cupsBytesPerLine != header.cupsWidth) {
    return "the rows of the page have " + std::to_string(header.cupsBytesPerLine) + " bytes, not " +
           std::to_string(header.cupsWidth);
  }
  return {};
}

void toInk(const cups_page_header2_s& header, std::span<std::uint8_t> row) {
  if (!isGrey(numberOf(header.cupsColorSpace))) return;
  for (std::uint8_t& level : row) level = static_cast<std::uint8_t>(255 - level);
}

}  // namespace wren::app
