// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A printer on a loopback port that does what a test tells it, one connection after another in a
// thread of its own.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/handles.h"

namespace wren::app {

using Bytes = std::vector<std::uint8_t>;

/// Bytes that no repeating fault leaves equal.
inline Bytes sampleBytes(std::size_t count) {
  Bytes bytes(count);
  std::uint32_t state = 1;
  for (std::uint8_t& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}

/// Waits until the condition holds, at most 20 seconds; false if it never did.
inline bool eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

class ScriptedPrinter {
 public:
  /// What the printer does with one connection. Closed in order when the script returns.
  using Script = std::function<void(ScriptedPrinter&)>;

  /// @param receiveBuffer small values make the printer stop taking bytes early; 0 is the
  ///   system's.
  /// @param port 0 for any free one.
  explicit ScriptedPrinter(Script script, int receiveBuffer = 0, bool ipv6 = false,
                           std::uint16_t port = 0)
      : script_(std::move(script)), ipv6_(ipv6), receiveBuffer_(receiveBuffer) {
    listen(port);
    thread_ = std::thread([this] { serve(); });
  }
  ScriptedPrinter(const ScriptedPrinter&) = delete;
  ScriptedPrinter& operator=(const ScriptedPrinter&) = delete;
  ~ScriptedPrinter() {
    stopping_ = true;
    thread_.join();
  }

  std::string port() const { return std::to_string(port_); }
  std::string uri() const {
    return "socket://" + std::string(ipv6_ ? "[::1]" : "127.0.0.1") + ":" + port();
  }

  /// Everything received so far, of all connections.
  Bytes received() const {
    const std::lock_guard lock(mutex_);
    return received_;
  }
  int connections() const { return connections_; }

  // For scripts.

  /// Reads until `count` more bytes are there, the sender closes or the printer is destroyed.
  /// @return false if fewer came.
  bool read(std::size_t count) {
    std::array<std::uint8_t, 4096> buffer;
    while (count > 0) {
      if (!waitReadable()) return false;
      const ssize_t got =
          ::recv(connection_.get(), buffer.data(), std::min(count, buffer.size()), 0);
      if (got <= 0) return false;
      const std::lock_guard lock(mutex_);
      received_.insert(received_.end(), buffer.begin(), buffer.begin() + got);
      count -= static_cast<std::size_t>(got);
    }
    return true;
  }
  void readAll() { read(SIZE_MAX); }

  void send(const Bytes& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count =
          ::send(connection_.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return;
      sent += static_cast<std::size_t>(count);
    }
  }

  /// Resets the connection.
  void reset() {
    const linger none = {1, 0};
    ::setsockopt(connection_.get(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    connection_.reset();
  }

  /// Waits without reading; ends early when the printer is destroyed.
  void pause(std::chrono::milliseconds duration) const {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (!stopping_ && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }

  /// Waits until the condition holds; ends early when the printer is destroyed.
  void pauseUntil(const std::function<bool()>& condition) const {
    while (!stopping_ && !condition()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }

 private:
  void listen(std::uint16_t port) {
    listener_ = FileDescriptor(::socket(ipv6_ ? AF_INET6 : AF_INET, SOCK_STREAM, 0));
    const int on = 1;
    ::setsockopt(listener_.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (receiveBuffer_ > 0) {
      ::setsockopt(listener_.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer_, sizeof receiveBuffer_);
    }
    sockaddr_in6 six = {};
    six.sin6_family = AF_INET6;
    six.sin6_port = htons(port);
    six.sin6_addr = in6addr_loopback;
    sockaddr_in four = {};
    four.sin_family = AF_INET;
    four.sin_port = htons(port);
    four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* address =
        ipv6_ ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);
    socklen_t length = ipv6_ ? sizeof six : sizeof four;
    if (::bind(listener_.get(), address, length) != 0 || ::listen(listener_.get(), 8) != 0) return;
    ::getsockname(listener_.get(),
                  reinterpret_cast<sockaddr*>(ipv6_ ? static_cast<void*>(&six) : &four), &length);
    port_ = ntohs(ipv6_ ? six.sin6_port : four.sin_port);
  }

  bool waitReadable(int descriptor) const {
    while (!stopping_) {
      pollfd poll = {descriptor, POLLIN, 0};
      if (::poll(&poll, 1, 10) > 0) return true;
    }
    return false;
  }
  bool waitReadable() const { return waitReadable(connection_.get()); }

  void serve() {
    while (waitReadable(listener_.get())) {
      connection_ = FileDescriptor(::accept(listener_.get(), nullptr, nullptr));
      if (!connection_) continue;
      ++connections_;
      script_(*this);
      connection_.reset();
    }
  }

  Script script_;
  bool ipv6_;
  int receiveBuffer_;
  FileDescriptor listener_;
  FileDescriptor connection_;
  std::uint16_t port_ = 0;
  mutable std::mutex mutex_;
  Bytes received_;
  std::atomic<int> connections_{0};
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace wren::app
