// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The state machine of the software printer: a receive buffer, a mechanism that
// prints it command by command, real-time commands that overtake it, and faults.
// It knows no sockets, no files and no clock.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "escpos/command.h"
#include "escpos/splitter.h"
#include "preview/printer_control.h"
#include "preview/printer_state.h"

namespace wren::preview {

/// The bytes of one connection.
using JobId = std::uint64_t;

/// What the printer does to the world. Called from within the functions of `SoftwarePrinter`, which
/// must not be called back.
class PrinterOutput {
 public:
  virtual ~PrinterOutput() = default;
  /// A command is executed. Bit images come together with the feed that prints them.
  virtual void print(JobId job, escpos::CommandKind kind, std::span<const std::uint8_t> bytes) = 0;
  /// A byte for the host of a job, which may have closed its connection.
  virtual void answer(JobId job, std::uint8_t byte) = 0;
  /// Nothing more of the job will be printed.
  /// @param ending why it ended early, or empty.
  virtual void endJob(JobId job, const std::string& ending) = 0;
  /// The connection of a job is to be reset. The job need not end with it.
  virtual void resetConnection(JobId job) = 0;
};

class SoftwarePrinter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::size_t kMaxTriggers = 100;

  /// @param output must outlive the printer.
  /// @param dpi of its mechanism, for millimetres.
  SoftwarePrinter(PrinterOutput& output, unsigned dpi, Time now);

  /// A connection begins. None may be open.
  void beginJob(JobId job);
  /// The job that is being received.
  std::optional<JobId> receiving() const { return receiving_; }
  /// How many bytes of the connection the printer takes now; 0: it does not read.
  std::size_t room(Time now);
  /// Receives bytes, at most `room`, and prints what it can.
  void take(std::span<const std::uint8_t> bytes, Time now);
  /// The connection ends. Its job ends when all of it is printed.
  /// @param ending why it ended early, or empty.
  void endInput(const std::string& ending, Time now);

  /// Obeys a command at once, or when its trigger is due.
  /// @return the error message, or an empty string.
  std::string control(const Control& control, Time now);

  /// Goes on with what time allows.
  void advance(Time now);
  /// When `advance` has something to do, or `room` grows by itself; none: after an event only.
  std::optional<Time> nextEvent() const;

  /// Ends all jobs at once. What waits in the buffer is lost; where nothing waits, an incomplete
  /// command and a line without its feed still belong to the job.
  void abandon(const std::string& ending);

  const PrinterState& state() const { return state_; }
  bool isPowered() const { return isPowered_; }
  /// It listens for connections.
  bool isReachable() const { return isPowered_ && !isVanished_; }
  bool isStalled() const { return isStalled_; }
  /// It would take bytes without limit of time. Otherwise a job cannot be blamed for being slow.
  bool isReady() const { return isReachable() && !isStalled_ && state_.isOnline(); }
  std::chrono::milliseconds acceptDelay() const { return acceptDelay_; }
  std::size_t bufferSize() const { return bufferSize_; }
  /// Received and not yet executed.
  std::size_t bufferedBytes() const { return queuedBytes_ + splitter_.pendingBytes(); }
  std::uint64_t receivedBytes() const { return receivedBytes_; }
  /// Feed units of all jobs.
  std::uint64_t printedUnits() const { return printedUnits_; }

 private:
  // A command in the buffer, a run of single bytes, or the end of a job.
  struct Entry {
    JobId job = 0;
    bool isEnd = false;
    escpos::CommandKind kind = escpos::CommandKind::kNul;
    std::vector<std::uint8_t> bytes;
    std::string ending;
  };
  struct Pending {
    Trigger::Unit unit;
    std::uint64_t threshold;  // feed units or bytes
    Time due;
    Control control;
  };

  void receive(escpos::CommandKind kind, std::span<const std::uint8_t> bytes);
  void executeRealTime(escpos::CommandKind kind, std::span<const std::uint8_t> bytes);
  void recover(std::span<const std::uint8_t> bytes);
  void answer(JobId job, std::uint8_t byte);

  void apply(const Control& control);
  bool changeLimits(const Control& control);
  void resetConnection(const std::string& ending);
  void closeConnection(const std::string& ending);
  void losePower();
  template <class IsDue>
  bool fireFirst(IsDue isDue);
  bool fireTimes(Time now);
  bool fireBytes();
  bool fireBeforeFeed(std::uint64_t units);

  bool executeNext(Time now);
  void execute(const Entry& entry, Time now);
  void hold(const Entry& entry);
  void flushLine();
  void dropLine();
  bool hasWork(JobId job) const;
  void finishJob(JobId job, const std::string& ending);
  void refill(Time now);
  double byteRate() const;
  double quantum() const;
  std::uint64_t unitsOf(std::uint64_t millimetres) const;

  PrinterOutput& output_;
  unsigned dpi_;
  escpos::Splitter splitter_;
  PrinterState state_;
  bool isPowered_ = true;
  bool isVanished_ = false;
  bool isStalled_ = false;
  bool doesAnswer_ = true;
  std::size_t bufferSize_ = std::size_t{64} << 10;
  std::uint64_t baud_ = 0;
  std::uint64_t millimetresPerSecond_ = 0;
  std::chrono::milliseconds acceptDelay_{0};

  std::optional<JobId> receiving_;
  std::deque<Entry> queue_;
  std::size_t queuedBytes_ = 0;
  std::vector<Entry> line_;  // executed commands from the first bit image that no feed has printed
  std::size_t lineBytes_ = 0;
  std::vector<Pending> pending_;
  std::uint64_t receivedBytes_ = 0;
  std::uint64_t printedUnits_ = 0;
  Time mechanismIsFree_;
  double allowance_ = 0;  // bytes that the serial line has brought
  Time refilled_;
};

}  // namespace wren::preview
