// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/dot_matrix_ep_printer.h"

#include <algorithm>
#include <vector>

namespace {

constexpr unsigned long kRowsPerBand = 8;
constexpr unsigned char kEscape = 0x1B;

// The columns of a band: bit 7 is its top row; rows that a short band lacks give 0.
void packColumns(const unsigned char* band, unsigned long rows, unsigned long stride,
                 std::vector<unsigned char>& columns) {
  std::fill(columns.begin(), columns.end(), static_cast<unsigned char>(0));
  for (unsigned long row = 0; row < rows; ++row) {
    const unsigned char* pixels = band + row * stride;
    const auto bit = static_cast<unsigned char>(0x80U >> row);
    for (unsigned long x = 0; x < columns.size(); ++x) {
      columns[x] = static_cast<unsigned char>(columns[x] | (pixels[x] != 0 ? bit : 0));
    }
  }
}

}  // namespace

void DotMatrixEpPrinter::doPrintImage(const unsigned char* data, unsigned long /*bytesPerLine*/,
                                      unsigned long height, unsigned long width) {
  const unsigned long count = width - getSkipRightPixels();
  const bool doubleDensity = getPageHeader()->HWResolution[0] > 100;
  const unsigned char bandStart[] = {
      kEscape, '*', static_cast<unsigned char>(doubleDensity ? 1 : 0),
      static_cast<unsigned char>(count & 0xFF), static_cast<unsigned char>((count >> 8) & 0xFF)};
  printByte(kEscape);
  printByte('<');
  std::vector<unsigned char> columns(count);
  while (height > 0 && !isCancelled()) {
    const unsigned long rows = std::min(height, kRowsPerBand);
    packColumns(data, rows, width, columns);
    printBytes(bandStart, sizeof bandStart);
    printBytes(columns.data(), count);
    // Printed output depends on the factor 2: the feed is in half dot rows.
    printByte(kEscape);
    printByte('J');
    printByte(static_cast<unsigned char>(2 * rows));
    height -= rows;
    data += rows * width;
  }
}
