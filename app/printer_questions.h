// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Asks a network printer how it is and whether it has printed, at moments that the caller has
// chosen: never inside the data of a command.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
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
  bool tellsCause = false;              ///< `kCauseRequest` too
  Answers printed = Answers::kUnknown;  ///< that everything has been printed
};

/// Belongs to one open connection; drops what the printer sends without being asked.
class PrinterQuestions {
 public:
  /// The longest wait for the answers to one question.
  static constexpr std::chrono::milliseconds kLimit{300};
  /// The same while it is not known whether the printer answers at all: a slow one that does would
  /// not be asked again.
  static constexpr std::chrono::milliseconds kFirstLimit{1'000};

  /// @param link, traits outlive this; not owned.
  PrinterQuestions(NetworkPrinter& link, PrinterTraits& traits) : link_(link), traits_(traits) {}

  /// Sends the real-time status requests, each after the answer to the one before. While answers
  /// are due, it asks for one of that kind only, as the others could not be told apart from it.
  /// @return nothing if the printer did not answer; sends nothing if it never does.
  std::optional<PrinterStatus> askStatus(const CancelCheck& cancel = {});

  /// Says that so many `kCauseRequest` are sent with the bytes of a job; nobody waits for their
  /// answers.
  void expectCauses(unsigned requests) { due_.insert(due_.end(), requests, kCause); }

  /// The last answer to them since the previous call.
  std::optional<std::uint8_t> takeCause();

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
  LinkResult ask(std::uint8_t n, const Patience& patience);
  bool settleDue(const Patience& patience);
  void readAnswers();

  NetworkPrinter& link_;
  PrinterTraits& traits_;
  AnswerReader reader_;
  PrinterStatus last_;
  /// The real-time requests without an answer so far, oldest first. Printers answer in order.
  std::deque<std::uint8_t> due_;
  std::size_t dueBeforePrinted_ = 0;  ///< those of them that stand before `kPrintedRequest`
  StatusAnswers arrived_;             ///< the last answer to each
  bool printedSeen_ = false;
};

}  // namespace wren::app
