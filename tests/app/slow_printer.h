// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A network printer that takes as many bytes as a test lets it, or does not answer at all.

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/handles.h"

namespace wren_test {

class SlowPrinter {
 public:
  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

  /// Is away: its address is its own, but refuses connections.
  SlowPrinter();
  SlowPrinter(const SlowPrinter&) = delete;
  SlowPrinter& operator=(const SlowPrinter&) = delete;
  ~SlowPrinter();

  /// A device that is asked nothing: this printer does not answer.
  std::string uri() const;

  /// Answers from now on, one connection after the other.
  /// @param limit of bytes to read from each connection; the client then waits.
  void comeBack(std::size_t limit = kAll);

  /// Reads all from now on, of the present connection too.
  void readOn();

  /// The bytes of each connection so far, empty ones left out.
  std::vector<std::string> received() const;

  /// Waits at most 20 seconds until so many bytes have come in all.
  bool waitForBytes(std::size_t count) const;

 private:
  void serve();
  void serveOne(int client);

  wren::FileDescriptor listener_;
  int port_ = 0;
  std::atomic<std::size_t> limit_ = 0;
  std::atomic<bool> stopping_ = false;
  mutable std::mutex mutex_;
  std::vector<std::string> received_;
  std::thread thread_;
};

}  // namespace wren_test
