// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A printer made of a socket: keeps the bytes of each connection.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

class CaptureServer {
 public:
  /// Listens on a free port of the loopback; throws std::runtime_error when it cannot.
  CaptureServer();
  ~CaptureServer();
  CaptureServer(const CaptureServer&) = delete;
  CaptureServer& operator=(const CaptureServer&) = delete;

  int port() const { return port_; }

  /// From now on a connection is read up to `bytes` and then left to wait.
  void holdAfter(std::size_t bytes);

  /// Reads on, and from now on without waiting.
  void release();

  /// True once a connection was read up to the mark; false after thirty seconds.
  bool waitUntilHeld();

  /// The finished connections since the last call, in their order. Waits until there are `count`
  /// of them, thirty seconds at most.
  std::vector<std::vector<std::uint8_t>> take(std::size_t count);

 private:
  void serve();
  void readAll(int connection);
  void waitWhileHeld(std::size_t soFar);

  int port_ = 0;  // set while the listener is made, so it stands first
  int listener_ = -1;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t holdAfter_ = SIZE_MAX;
  bool held_ = false;
  std::vector<std::vector<std::uint8_t>> finished_;
  std::thread thread_;
};

