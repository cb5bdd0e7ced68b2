// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The commands that make the software printer fail and recover, one a line:
// "paper out", "power off after 30 mm". docs/PREVIEW.md lists them.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace wren::preview {

enum class ControlKind {
  kPaperOk,
  kPaperNearEnd,
  kPaperOut,
  kCoverOpen,
  kCoverClosed,
  kErrorNone,
  kErrorRecoverable,
  kErrorCutter,
  kErrorUnrecoverable,
  kErrorTemperature,
  kButtonHeld,
  kButtonReleased,
  kDrawerHigh,
  kDrawerLow,
  kAnswersOn,
  kAnswersOff,  ///< nothing that asks is answered
  kStall,       ///< stops reading
  kGo,          ///< reads again
  kReset,       ///< resets the connection
  kVanish,      ///< resets the connection and stops listening; the buffer is kept
  kReturn,      ///< listens again
  kPowerOff,    ///< like `kVanish`, and the buffer is lost
  kPowerOn,
  kBaud,         ///< value: serial speed, 10 bits a byte; 0: no limit
  kSpeed,        ///< value: mm of paper per second; 0: no limit
  kBuffer,       ///< value: size of the receive buffer in KiB, 4 to 64
  kAcceptDelay,  ///< value: ms before a connection is accepted
};

/// When a command takes effect.
struct Trigger {
  enum class Unit {
    kMillimetres,   ///< before the feed that would print more paper than this
    kBytes,         ///< when so many bytes have been received
    kMilliseconds,  ///< when so much time has passed
  };
  Unit unit = Unit::kMilliseconds;
  std::uint64_t count = 0;  ///< from the moment at which the command is given
};

struct Control {
  ControlKind kind = ControlKind::kGo;
  std::uint64_t value = 0;
  std::optional<Trigger> trigger;  ///< none: at once
};

/// Either a command or the error message.
struct ParsedControl {
  std::optional<Control> control;
  std::string error;
};

/// Parses a line without its newline: words of a command, its number if it has one, and optionally
/// "after N mm", "after N bytes" or "after N ms".
ParsedControl parseControl(const std::string& line);

}  // namespace wren::preview
