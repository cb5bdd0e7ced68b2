// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_status.h"

#include <utility>

namespace wren::app {
namespace {

// Bits 0, 1, 4 and 7 are fixed in a real-time status byte and in the first byte of automatic
// status, bits 4 and 7 in the others. XON (11) and XOFF (13) match none of them.
bool isStatus(std::uint8_t byte) {
  return (byte & 0x93) == 0x12;
}
bool isFirstOfAutomatic(std::uint8_t byte) {
  return (byte & 0x93) == 0x10;
}
bool isPaperStatus(std::uint8_t byte) {
  return (byte & 0x90) == 0x00;
}

constexpr unsigned kAutomaticRest = 3;

}  // namespace

std::optional<Answer> AnswerReader::take(std::uint8_t byte) {
  if (automaticLeft_ > 0 && isPaperStatus(byte)) {
    --automaticLeft_;
    return std::nullopt;
  }
  automaticLeft_ = isFirstOfAutomatic(byte) ? kAutomaticRest : 0;
  if (isStatus(byte)) return Answer{AnswerKind::kStatus, byte};
  if (isPaperStatus(byte)) return Answer{AnswerKind::kPrinted, byte};
  return std::nullopt;
}

// Bits as in the command references: n = 1 printer, 2 cause of off-line, 3 cause of error,
// 4 paper sensors.
PrinterStatus statusOf(const StatusAnswers& answers) {
  const unsigned printer = answers[0].value_or(0);
  const unsigned cause = answers[1].value_or(0);
  const unsigned error = answers[2].value_or(0);
  const unsigned paper = answers[3].value_or(0);
  PrinterStatus status;
  status.drawerPinHigh = (printer & 0x04) != 0;
  status.offline = (printer & 0x08) != 0;
  status.coverOpen = (cause & 0x04) != 0;
  status.paperOut = (cause & 0x20) != 0 || (paper & 0x60) != 0;
  status.paperNearEnd = (paper & 0x0C) != 0;
  status.cutterError = (error & 0x08) != 0;
  // The cause of off-line has one bit for all errors; it names a cutter error too.
  status.otherError = (error & 0x64) != 0 || ((cause & 0x40) != 0 && !status.cutterError);
  return status;
}

// Bits 2, 3, 5 and 6 all mean that it is off-line.
PrinterStatus withCause(const PrinterStatus& before, std::uint8_t answer) {
  const bool hasError = (answer & 0x40) != 0;
  PrinterStatus status = before;
  status.offline = (answer & 0x6C) != 0;
  status.coverOpen = (answer & 0x04) != 0;
  status.paperOut = (answer & 0x20) != 0;
  status.cutterError = hasError && before.cutterError;
  status.otherError = hasError && !before.cutterError;
  return status;
}

std::string describe(const PrinterStatus& status) {
  const bool hasCause =
      status.coverOpen || status.paperOut || status.cutterError || status.otherError;
  const std::pair<bool, const char*> words[] = {
      {status.paperOut, "out of paper"},
      {status.coverOpen, "cover open"},
      {status.cutterError, "cutter error"},
      {status.otherError, "printer error"},
      {status.offline && !hasCause, "off-line"},
      {status.paperNearEnd && !status.paperOut, "paper near its end"},
  };
  std::string text;
  for (const auto& [holds, word] : words) {
    if (holds) text += (text.empty() ? "" : ", ") + std::string(word);
  }
  return text;
}

}  // namespace wren::app
