// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes a page of dots as 8-dot bit-image bands, each followed by a paper feed (ESC/POS).

#pragma once

#include <cstddef>
#include <cstdint>

#include "printer/dot_bands.h"
#include "printer/wren_printer.h"

class DotMatrixEpPrinter : public WrenPrinter {
 public:
  DotMatrixEpPrinter() = default;

  /// Writes 1B 3C, then for every 8 rows 1B 2A m nL nH, one byte per dot column (its top row
  /// in bit 7) and 1B 4A n, where n is twice the number of rows.
  /// @param data `height` rows, `width` bytes apart; the skipped pixels on the right are not
  ///   read. Their number has to be smaller than `width`.
  /// @param bytesPerLine not used.
  /// Needs the page header, of which it reads the horizontal resolution. Stops between two
  /// bands once the job is cancelled. Throws std::bad_alloc between two commands.
  void doPrintImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                    unsigned long width) override;

 protected:
  /// Writes the same commands for a page that is packed already.
  void writeBands(const wren::printer::DotBands& bands);

 private:
  std::size_t columnsOf(unsigned long width) const { return width - getSkipRightPixels(); }
  void writeStart();
  void writeBand(const std::uint8_t* columns, std::size_t count, std::size_t rows);
};

/// The printer of a job: takes its pages packed, so that a page needs no byte for each dot.
class BandPrinter final : public DotMatrixEpPrinter {
 protected:
  bool takesBands() const override { return true; }
  void printBands(const wren::printer::DotBands& bands) override { writeBands(bands); }
};
