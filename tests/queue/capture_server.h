// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A network printer for tests: stores the bytes of each connection.

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

class CaptureServer {
 public:
  /// What one connection sent, and when; the times of one without bytes are those of its end.
  struct Connection {
    std::vector<std::uint8_t> bytes;
    std::chrono::steady_clock::time_point firstByte;
    std::chrono::steady_clock::time_point lastByte;
  };

  /// A receive buffer that soon blocks the sender of a held connection.
  static constexpr int kSmallBufferBytes = 8192;

  /// Listens on a free port of 127.0.0.1. Throws std::runtime_error on failure.
  /// @param bufferBytes of the receive buffer; 0 leaves it as the system has it.
  explicit CaptureServer(int bufferBytes = kSmallBufferBytes);
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
  std::vector<Connection> take(std::size_t count);

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
  std::vector<Connection> finished_;
  std::thread thread_;
};
