// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_matrix_ep_printer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "printer/dot_kernels.h"

namespace {

constexpr unsigned long kRowsPerBand = 8;
constexpr unsigned char kEscape = 0x1B;

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
  std::vector<std::uint8_t> columns(count);
  while (height > 0 && !isCancelled()) {
    const unsigned long rows = std::min(height, kRowsPerBand);
    wren::printer::packColumns(data, static_cast<unsigned>(rows), width, columns.data(), count);
    printBytes(bandStart, sizeof bandStart);
    printBytes(columns.data(), count);
    // The feed unit is half a dot row, so the factor is 2: printed output depends on it.
    printByte(kEscape);
    printByte('J');
    printByte(static_cast<unsigned char>(2 * rows));
    height -= rows;
    data += rows * width;
  }
}
