// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A software printer on a loopback port, for the socket:// backend of CUPS and for
// tests of till software. Each connection is a job with limits of size and time;
// connections are served one after another, as by a real printer.

#pragma once

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "preview/control_port.h"
#include "preview/loopback_socket.h"
#include "preview/options.h"
#include "preview/picture_worker.h"
#include "preview/software_printer.h"

namespace wren::preview {

/// What an error of accept() says about the listening socket.
enum class AcceptError {
  kOfConnection,  ///< the connection failed before it was accepted: go on
  kOfResources,   ///< no descriptor or memory now: try again later
  kOfListener,    ///< the socket cannot be used any more
};
AcceptError acceptErrorOf(int code);

class PrintServer : private PrinterOutput {
 public:
  /// Jobs that are received and wait in the buffer to be printed. No connection is accepted beyond.
  static constexpr std::size_t kMaxUnfinishedJobs = 64;

  /// @param options must outlive the server.
  /// @param stopDescriptor stops the server when it becomes readable; not owned.
  PrintServer(const Options& options, int stopDescriptor);
  ~PrintServer() override;

  /// Starts to listen and gives the printer its first commands.
  /// @return the error message, or an empty string.
  std::string open();

  /// The addresses with the actual ports, after `open`; that of the control port may be empty.
  const std::string& name() const { return name_; }
  const std::string& controlName() const { return control_.name(); }

  /// Serves jobs until it is stopped. One line per job goes to standard output, progress and
  /// problems to standard error. A picture of ordinary size is finished, others are cancelled.
  /// @return false if the listening socket failed.
  bool serve();

 private:
  using Time = SoftwarePrinter::Time;

  struct Connection {
    FileDescriptor socket;
    std::unique_ptr<ReceivedJob> job;   // none before the first command that prints
    std::vector<std::uint8_t> request;  // requests of status before that
    std::uint64_t receivedBytes = 0;
  };

  void print(JobId job, escpos::CommandKind kind, std::span<const std::uint8_t> bytes) override;
  void answer(JobId job, std::uint8_t byte) override;
  void endJob(JobId job, const std::string& ending) override;
  void resetConnection(JobId job) override;

  std::string obey(const std::string& line);
  std::string statusText() const;
  void followReachability();
  void limitWindow();
  bool mayAccept() const;
  bool acceptConnection(Time now);
  bool acceptFailed(int code, Time now);
  void beginConnection(FileDescriptor socket, Time now);
  void receive(bool hasHungUp, Time now);
  void takeBytes(std::span<const std::uint8_t> bytes, Time now);
  void checkLimits(Time now);
  std::vector<pollfd> descriptors(Time now);
  int timeoutMs(Time now) const;
  bool serveOnce();

  const Options& options_;
  int stopDescriptor_;
  std::string name_;
  LoopbackSocket listener_;
  bool isListening_ = false;
  ControlPort control_;
  SoftwarePrinter printer_;
  std::map<JobId, Connection> connections_;
  JobId lastJob_ = 0;
  unsigned nextNumber_ = 1;
  std::optional<Time> acceptAt_;  // set while a connection waits to be accepted
  int acceptError_ = 0;           // the last one, so that it is reported once
  Time lastCheck_;
  Time deadline_;
  Time nextProgress_;
  std::vector<std::uint8_t> buffer_;
  bool isStopped_ = false;
  std::unique_ptr<PictureWorker> worker_;
};

}  // namespace wren::preview
