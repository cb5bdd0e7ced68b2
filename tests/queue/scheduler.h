// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A cupsd of our own: its files lie in one folder, it listens on a socket there
// and has queues for each PPD. Nothing of the system's CUPS is written.

#pragma once

#include <sys/types.h>

#include <string>

class Scheduler {
 public:
  /// `work` was laid out by run_queue_test.sh; as root the filters run as lp.
  Scheduler(std::string work, bool asRoot);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  /// Starts it; false when it does not answer within ten seconds.
  bool start();

  /// Adds queues for a printer at a port of the loopback: wren58, wren80 and wren112 with the
  /// settings that receipts want, plain80 without them, dark80 with another Brightness.
  bool addQueues(int port) const;

  const std::string& work() const { return work_; }

  /// The last lines of its log, for the message of a failed test.
  std::string logTail() const;

 private:
  void writeConfiguration() const;
  bool addQueue(const std::string& name, int paper, int port, const std::string& settings) const;

  std::string work_;
  bool asRoot_;
  pid_t pid_ = -1;
};

/// Runs a shell command and returns its exit status.
int run(const std::string& command);

/// Runs a shell command and returns what it writes; empty when it fails.
std::string outputOf(const std::string& command);

