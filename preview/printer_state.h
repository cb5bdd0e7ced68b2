// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The sensors and errors of the software printer, and the status bytes that tell
// a host about them.

#pragma once

#include <cstdint>

namespace wren::preview {

enum class PaperSupply { kOk, kNearEnd, kOut };

enum class PrinterError {
  kNone,
  kRecoverable,    ///< such as a jam: a real-time recovery clears it
  kCutter,         ///< the same for a blocked cutter
  kUnrecoverable,  ///< only a repair helps
  kTemperature,    ///< the head is too hot; it recovers by itself
};

struct PrinterState {
  PaperSupply paper = PaperSupply::kOk;
  PrinterError error = PrinterError::kNone;
  bool isCoverOpen = false;
  bool isButtonHeld = false;  ///< the feed button
  bool isDrawerHigh = false;  ///< level of pin 3 of the drawer's connector

  /// Off-line, a printer executes nothing that is in its buffer.
  bool isOnline() const;

  /// The answer to DLE EOT n (10 04 n), as the ESC/POS command references publish it. Bits 0 and 7
  /// are 0, bits 1 and 4 are 1 in every answer. Bits of things that this printer does not have are
  /// 0.
  /// @param n 1 (printer), 2 (cause of off-line), 3 (cause of an error) or 4 (roll paper).
  std::uint8_t realTimeStatus(unsigned n) const;

  /// The answer to GS r n (1D 72 n). Bits 4 and 7 are 0 in every answer.
  /// @param n 1 or 49: paper, bits 0 and 1 near its end, bits 2 and 3 at its end; 2 or 50: drawer,
  /// bit 0 is the level of pin 3.
  std::uint8_t transmittedStatus(unsigned n) const;
};

}  // namespace wren::preview
