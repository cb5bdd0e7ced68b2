// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Asks a network printer how it is and whether it has printed, at moments that the caller has
// chosen: never inside the data of a command.

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "app/network_printer.h"
#include "app/printer_status.h"
#include "common/cancel_check.h"

namespace wren::app {

/// What a printer was found to answer. Kept between its connections: one that does not answer is
/// asked once.
struct PrinterTraits {
  enum class Answers : std::uint8_t { kUnknown, kYes, kNever };

  Answers status = Answers::kUnknown;   ///< real-time status
  Answers printed = Answers::kUnknown;  ///< that everything has been printed
};

/// Belongs to one open connection; drops what the printer sends without being asked.
class PrinterQuestions {
 public:
  /// The longest wait for the answers to one question.
  static constexpr std::chrono::milliseconds kLimit{300};

  /// @param link, traits outlive this; not owned.
  PrinterQuestions(NetworkPrinter& link, PrinterTraits& traits) : link_(link), traits_(traits) {}

  /// Sends the real-time status requests, each after the answer to the one before.
  /// @return nothing if the printer did not answer; sends nothing if it never does.
  std::optional<PrinterStatus> askStatus(const CancelCheck& cancel = {});

  /// Finds out whether `confirmPrinted` is answered, if that is not known. Only for an idle printer
  /// that is ready, before the bytes that reset it: they also clear what a printer without the
  /// command makes of it.
  void tryPrinted(const CancelCheck& cancel = {});

  /// Asks to be told when everything has been printed.
  LinkResult requestPrinted(const Patience& patience);

  /// Waits for the answer to `requestPrinted`; may be called again after a time-out, also after
  /// `askStatus`.
  LinkResult waitForPrinted(const Patience& patience);

 private:
  LinkResult send(std::span<const std::uint8_t> request, const Patience& patience);
  LinkResult waitForStatus(const Patience& patience, std::optional<std::uint8_t>& byte);
  std::optional<std::uint8_t> readAnswers();

  NetworkPrinter& link_;
  PrinterTraits& traits_;
  AnswerReader reader_;
  bool printedSeen_ = false;
};

}  // namespace wren::app
