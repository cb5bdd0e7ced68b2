// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What an ESC/POS printer answers when it is asked how it is: single bytes, told apart from each
// other and from noise by their fixed bits. Nothing here sends or receives.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace wren::app {

/// The real-time status requests `10 04 n`, n = 1 to 4, answered by one byte each even when the
/// printer is off-line.
inline constexpr std::uint8_t kStatusRequests = 4;
constexpr std::array<std::uint8_t, 3> statusRequest(std::uint8_t n) {
  return {0x10, 0x04, n};
}

/// The one that tells by itself why a printer does not print, whatever the others say.
inline constexpr std::uint8_t kCause = 2;
inline constexpr std::array<std::uint8_t, 3> kCauseRequest = statusRequest(kCause);

/// Transmit paper status, `1D 72 1`: answered when everything before it has been printed.
inline constexpr std::array<std::uint8_t, 3> kPrintedRequest = {0x1D, 0x72, 0x01};

enum class AnswerKind {
  kStatus,   ///< of `statusRequest`
  kPrinted,  ///< of `kPrintedRequest`
};

struct Answer {
  AnswerKind kind;
  std::uint8_t byte;

  bool operator==(const Answer&) const = default;
};

/// Finds the answers among the bytes that a printer sends. Skips XON and XOFF, noise, and the
/// four bytes of automatic status (`1D 61`), which another program may have switched on.
class AnswerReader {
 public:
  /// Takes the next byte.
  /// @return the answer that it is, if it is one.
  std::optional<Answer> take(std::uint8_t byte);

 private:
  unsigned automaticLeft_ = 0;
};

/// The answers to n = 1 to 4; those that did not come are empty.
using StatusAnswers = std::array<std::optional<std::uint8_t>, kStatusRequests>;

struct PrinterStatus {
  bool offline = false;
  bool coverOpen = false;
  bool paperOut = false;
  bool paperNearEnd = false;  ///< never set by a printer without the sensor
  bool cutterError = false;
  bool otherError = false;
  /// Level of pin 3 of the drawer's connector. Which one means open depends on the drawer.
  bool drawerPinHigh = false;

  /// Whether it prints what it gets.
  bool isReady() const {
    return !offline && !coverOpen && !paperOut && !cutterError && !otherError;
  }
  bool operator==(const PrinterStatus&) const = default;
};

PrinterStatus statusOf(const StatusAnswers& answers);

/// What a printer is after an answer to `kCauseRequest` alone: what that does not tell stays as it
/// was before.
PrinterStatus withCause(const PrinterStatus& before, std::uint8_t answer);

/// What keeps the printer from printing or soon will, for people: "out of paper, cover open".
/// Empty if nothing does.
std::string describe(const PrinterStatus& status);

}  // namespace wren::app
