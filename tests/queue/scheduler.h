// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A private cupsd with queues for each PPD. All its files are in one folder; the system's CUPS is
// not changed.

#pragma once

#include <sys/types.h>

#include <string>

class Scheduler {
 public:
  /// @param work the folder that run_queue_test.sh prepared.
  /// @param asRoot the filters run as user lp; otherwise as the user of this process.
  Scheduler(std::string work, bool asRoot);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  /// Starts it; false if it does not answer within ten seconds.
  bool start();

  /// Adds queues for a printer at a port of 127.0.0.1: wren58, wren80 and wren112 with the settings
  /// for receipts, plain80 without them, dark80 with a different Brightness.
  bool addQueues(int port) const;

  const std::string& work() const { return work_; }

  /// The last lines of its error log.
  std::string logTail() const;

  /// Waits at most 30 seconds until its error log has a text.
  bool waitForLog(const std::string& text) const;

 private:
  void writeConfiguration() const;
  bool addQueue(const std::string& name, int paper, int port, const std::string& settings) const;

  std::string work_;
  bool asRoot_;
  pid_t pid_ = -1;
};

/// Runs a shell command and returns its exit status.
int run(const std::string& command);

/// Runs a shell command and returns its standard output; empty if it fails.
std::string outputOf(const std::string& command);
