// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/printer_state.h"

namespace wren::preview {
namespace {

constexpr unsigned kFixedBits = 0x12;

constexpr unsigned bit(unsigned number, bool isSet) {
  return isSet ? 1U << number : 0U;
}

// Two sensors that change together have a bit each.
constexpr unsigned bits(unsigned first, bool areSet) {
  return areSet ? 3U << first : 0U;
}

}  // namespace

bool PrinterState::isOnline() const {
  return paper != PaperSupply::kOut && error == PrinterError::kNone && !isCoverOpen &&
         !isButtonHeld;
}

std::uint8_t PrinterState::realTimeStatus(unsigned n) const {
  // Where the roll has ended, its near-end sensors see no paper either.
  const bool isOut = paper == PaperSupply::kOut;
  const bool isNearEnd = paper != PaperSupply::kOk;
  unsigned answer = kFixedBits;
  switch (n) {
    case 1:
      answer |= bit(2, isDrawerHigh) | bit(3, !isOnline()) | bit(6, isButtonHeld);
      break;
    case 2:
      answer |= bit(2, isCoverOpen) | bit(3, isButtonHeld) | bit(5, isOut) |
                bit(6, error != PrinterError::kNone);
      break;
    case 3:
      answer |= bit(2, error == PrinterError::kRecoverable) |
                bit(3, error == PrinterError::kCutter) |
                bit(5, error == PrinterError::kUnrecoverable) |
                bit(6, error == PrinterError::kTemperature);
      break;
    default:
      answer |= bits(2, isNearEnd) | bits(5, isOut);
      break;
  }
  return static_cast<std::uint8_t>(answer);
}

std::uint8_t PrinterState::transmittedStatus(unsigned n) const {
  const bool isAboutPaper = n % 2 == 1;
  if (!isAboutPaper) return static_cast<std::uint8_t>(bit(0, isDrawerHigh));
  return static_cast<std::uint8_t>(bits(0, paper != PaperSupply::kOk) |
                                   bits(2, paper == PaperSupply::kOut));
}

}  // namespace wren::preview
