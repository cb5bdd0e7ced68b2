// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_matrix_ep_printer.h"

#include <algorithm>
#include <vector>

#include "printer/dot_kernels.h"

using wren::printer::DotBands;
using wren::printer::kRowsPerBand;

namespace {

constexpr unsigned char kEscape = 0x1B;

}  // namespace

void DotMatrixEpPrinter::writeStart() {
  printByte(kEscape);
  printByte('<');
}

void DotMatrixEpPrinter::writeBand(const std::uint8_t* columns, std::size_t count,
                                   std::size_t rows) {
  const bool doubleDensity = getPageHeader()->HWResolution[0] > 100;
  const unsigned char start[] = {kEscape, '*', static_cast<unsigned char>(doubleDensity ? 1 : 0),
                                 static_cast<unsigned char>(count & 0xFF),
                                 static_cast<unsigned char>((count >> 8) & 0xFF)};
  printBytes(start, sizeof start);
  printBytes(columns, count);
  // The feed unit is half a dot row, so the factor is 2: printed output depends on it.
  const unsigned char feed[] = {kEscape, 'J', static_cast<unsigned char>(2 * rows)};
  printBytes(feed, sizeof feed);
}

void DotMatrixEpPrinter::doPrintImage(const unsigned char* data, unsigned long /*bytesPerLine*/,
                                      unsigned long height, unsigned long width) {
  writeStart();
  std::vector<std::uint8_t> columns(columnsOf(width));
  while (height > 0 && !isCancelled()) {
    const std::size_t rows = std::min<std::size_t>(height, kRowsPerBand);
    wren::printer::BandRows band = {};
    for (std::size_t row = 0; row < rows; ++row) band[row] = data + row * width;
    wren::printer::packColumns(band, rows, columns.data(), columns.size());
    writeBand(columns.data(), columns.size(), rows);
    height -= rows;
    data += rows * width;
  }
}

void DotMatrixEpPrinter::writeBands(const DotBands& bands) {
  writeStart();
  for (std::size_t i = 0; i < bands.bandCount() && !isCancelled(); ++i) {
    writeBand(bands.band(i), columnsOf(bands.width()), bands.rowsOfBand(i));
  }
}
