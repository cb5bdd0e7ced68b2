// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_bands.h"

#include "printer/dot_kernels.h"

namespace wren::printer {

void BandPacker::take(std::size_t rows) {
  for (; packed_ < bands_.bandCount(); ++packed_) {
    const std::size_t top = first_ + packed_ * kRowsPerBand;
    const std::size_t count = bands_.rowsOfBand(packed_);
    if (top + count > rows) return;
    BandRows band = {};
    for (std::size_t row = 0; row < count; ++row) {
      band[row] = ring_ + (top + row) % ringRows_ * bands_.width();
    }
    packColumns(band, count, bands_.band(packed_), bands_.width());
  }
}

}  // namespace wren::printer
