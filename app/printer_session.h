// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The way of one job's bytes to a network printer: waits until the printer is there and ready,
// waits while it takes none, and ends when it has taken, and where it can say so printed, all of
// them. Never sends a byte of a job twice.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "app/band_requests.h"
#include "app/known_printer.h"
#include "app/network_printer.h"
#include "app/printer_questions.h"
#include "common/cancel_check.h"

namespace wren::app {

/// How long a session waits for what.
struct SessionTimes {
  using Milliseconds = std::chrono::milliseconds;

  Milliseconds connect{5'000};      ///< one try to connect
  Milliseconds retry{1'000};        ///< between tries, and between questions to one that waits
  Milliseconds stalled{2'000};      ///< without progress before the printer counts as stalled
  Milliseconds cancelGrace{500};    ///< without progress before a cancelled job is dropped
  Milliseconds unprinted{60'000};   ///< a ready printer may take this long to confirm the end
  Milliseconds close{1'000};        ///< for the printer to close its side
  Milliseconds unattended{10'000};  ///< without progress before bytes without a job are dropped
};

/// For one thread at a time.
class PrinterSession {
 public:
  using OnCondition = std::function<void(const PrinterCondition&)>;

  /// Does not connect yet.
  /// @param asksStatus false sends nothing but the job's bytes.
  PrinterSession(NetworkAddress address, std::shared_ptr<KnownPrinter> printer,
                 bool asksStatus = true, const SessionTimes& times = {});
  PrinterSession(const PrinterSession&) = delete;
  PrinterSession& operator=(const PrinterSession&) = delete;

  /// Drops what was not taken by the printer, if the session was not ended.
  ~PrinterSession() = default;

  /// From now on the bytes are those of a job: waits for the printer have no limit but its cancel.
  /// Without this, a printer that is away or takes nothing is an error.
  /// @param onCondition called with the printer's condition when the job's turn comes and at each
  ///   change, from within the calls below.
  void attach(CancelCheck cancel, OnCondition onCondition);

  /// Connects and waits until the printer is ready. Does nothing if that is done.
  bool begin();

  /// Sends bytes of the job; begins first if need be. Between bands it also asks a printer that
  /// answers why it stops, if it does. After a cancel they are still sent as long as
  /// the printer takes them, so that a cancelled job can end in order.
  /// @return false if they were not all taken. Everything after that fails too.
  bool write(std::span<const std::uint8_t> bytes);

  /// Says that the bytes so far end with a whole command, so that the printer can be asked how it
  /// is.
  void betweenCommands();

  /// Waits until the printer has everything, and has printed it if it can say so. Closes.
  /// @return false if that failed or the job was cancelled meanwhile; true if nothing was sent.
  bool end();

  /// How the printer was when this session last heard of it.
  const PrinterCondition& condition() const { return condition_; }

  /// Why `begin`, `write` or `end` failed, for people.
  const std::string& fault() const { return fault_; }

  /// Whether it failed because the job was cancelled.
  bool wasCancelled() const;

 private:
  enum class State { kFresh, kBegun, kEnded, kFailed };

  bool fail(const std::string& fault);
  bool waitForTurn();
  bool reachPrinter();
  bool connect();
  bool waitUntilReady();
  bool writeAll(std::span<const std::uint8_t> bytes);
  bool writeAfterCancel(std::span<const std::uint8_t> bytes);
  bool drain();
  bool drainAfterCancel();
  bool waitUntilPrinted();
  bool pause();
  void watch();
  void noteProgress(bool hasProgressed);
  bool hasWaitedEnough() const;
  void setStalled(bool stalled);
  void setStatus(const std::optional<PrinterStatus>& status);
  void setCondition(const PrinterCondition& condition);

  NetworkAddress address_;
  std::shared_ptr<KnownPrinter> printer_;
  bool asksStatus_;
  SessionTimes times_;
  bool hasJob_ = false;
  CancelCheck cancel_;
  OnCondition onCondition_;
  State state_ = State::kFresh;
  std::unique_ptr<KnownPrinter::Turn> turn_;
  NetworkPrinter link_;
  std::optional<PrinterQuestions> questions_;
  std::optional<BandRequests> bandRequests_;
  PrinterCondition condition_;
  std::chrono::steady_clock::time_point lastProgress_;
  std::string fault_;
};

/// Asks a printer that has no job how it is and notes the answer. Does nothing while a session has
/// its turn, or if the printer is known not to answer.
void askIdlePrinter(const NetworkAddress& address, const std::shared_ptr<KnownPrinter>& printer,
                    std::chrono::milliseconds connectLimit);

}  // namespace wren::app
