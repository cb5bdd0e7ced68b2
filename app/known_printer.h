// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What is remembered of a printer between connections, and whose turn it is: two queues
// may lead to one printer, and their jobs must not mix.

#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "app/network_printer.h"
#include "app/printer_questions.h"
#include "app/printer_status.h"

namespace wren::app {

/// How a printer was when it was last heard of.
struct PrinterCondition {
  bool away = false;                    ///< it cannot be reached
  bool stalled = false;                 ///< it takes no bytes
  std::optional<PrinterStatus> status;  ///< what it answered, if it answers

  bool operator==(const PrinterCondition&) const = default;
};

/// Safe to use from several threads.
class KnownPrinter {
 public:
  class Turn;

  /// Takes the printer for one connection.
  /// @return null while another has it.
  static std::unique_ptr<Turn> tryTurn(const std::shared_ptr<KnownPrinter>& printer);

  /// Whether the condition is older than `age`. Says so once: the caller is about to renew it.
  bool isDue(std::chrono::milliseconds age);

  /// Says that the condition may have changed unseen.
  void makeDue();

  PrinterCondition condition() const;
  void setCondition(const PrinterCondition& condition);

 private:
  mutable std::mutex mutex_;
  PrinterCondition condition_;
  PrinterTraits traits_;
  bool taken_ = false;
  std::optional<std::chrono::steady_clock::time_point> renewed_;
};

/// Gives the printer back at the end of its life.
class KnownPrinter::Turn {
 public:
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn();

  /// Only for the holder of the turn, so no lock is needed.
  PrinterTraits& traits() { return printer_->traits_; }

 private:
  friend class KnownPrinter;
  explicit Turn(std::shared_ptr<KnownPrinter> printer) : printer_(std::move(printer)) {}

  std::shared_ptr<KnownPrinter> printer_;
};

/// The printers of a process, by address. Safe to use from several threads.
class KnownPrinters {
 public:
  std::shared_ptr<KnownPrinter> find(const NetworkAddress& address);
  /// @param name any text that tells it apart from the others.
  std::shared_ptr<KnownPrinter> find(const std::string& name);

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<KnownPrinter>> printers_;
};

}  // namespace wren::app
