// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A network printer for tests: stores the bytes of each connection.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

class CaptureServer {
 public:
  /// Listens on a free port of 127.0.0.1. Throws std::runtime_error on failure.
  CaptureServer();
  ~CaptureServer();
  CaptureServer(const CaptureServer&) = delete;
  CaptureServer& operator=(const CaptureServer&) = delete;

  int port() const { return port_; }

  /// Stops reading a connection after about `bytes`, until `release`.
  void holdAfter(std::size_t bytes);

  /// Continues to read and cancels `holdAfter`.
  void release();

  /// Waits until a connection is held; false after 30 seconds.
  bool waitUntilHeld();

  /// The connections that ended since the last call, in order. Waits for `count` of them, at most
  /// 30 seconds.
  std::vector<std::vector<std::uint8_t>> take(std::size_t count);

 private:
  void serve();
  void readAll(int connection);
  void waitWhileHeld(std::size_t soFar);

  int port_ = 0;  // set by the initialiser of listener_, so it must come first
  int listener_ = -1;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t holdAfter_ = SIZE_MAX;
  bool held_ = false;
  std::vector<std::vector<std::uint8_t>> finished_;
  std::thread thread_;
};
