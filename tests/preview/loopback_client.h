// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A TCP client on the loopback address, for tests of the print server.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "common/handles.h"

class LoopbackClient {
 public:
  /// Connects to "127.0.0.1:PORT".
  explicit LoopbackClient(const std::string& server) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port =
        htons(static_cast<std::uint16_t>(std::stoul(server.substr(server.rfind(':') + 1))));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ =
        ::connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }

  bool connected() const { return connected_; }

  /// Sends until the server closes the connection; true if all bytes were sent.
  bool send(const std::vector<std::uint8_t>& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
      const ssize_t count =
          ::send(socket_.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }

  /// Ends the job as a print system does and waits until the server has closed the connection.
  void endAndWait() {
    ::shutdown(socket_.get(), SHUT_WR);
    waitForClose();
  }

  void waitForClose() {
    char byte;
    while (::recv(socket_.get(), &byte, 1, 0) > 0) {
    }
  }

  /// Sends what the other side takes within a time.
  /// @return the number of bytes.
  std::size_t sendFor(const std::vector<std::uint8_t>& bytes, double seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    std::size_t sent = 0;
    while (sent < bytes.size() && std::chrono::steady_clock::now() < end) {
      const ssize_t count = ::send(socket_.get(), bytes.data() + sent, bytes.size() - sent,
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
      if (count > 0) sent += static_cast<std::size_t>(count);
      if (count <= 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return sent;
  }

  /// Reads so many bytes; fewer if the other side ends or says nothing for a time.
  std::vector<std::uint8_t> read(std::size_t count, double seconds = 20.0) {
    setPatience(seconds);
    std::vector<std::uint8_t> bytes;
    std::uint8_t byte = 0;
    while (bytes.size() < count && ::recv(socket_.get(), &byte, 1, 0) == 1) bytes.push_back(byte);
    return bytes;
  }

  /// Reads up to a newline, which is left out.
  std::string readLine() {
    setPatience(20.0);
    std::string line;
    char byte = 0;
    while (::recv(socket_.get(), &byte, 1, 0) == 1 && byte != '\n') line += byte;
    return line;
  }

  /// Waits for the end of the connection; true if the other side has reset it.
  bool isReset() {
    setPatience(20.0);
    char byte = 0;
    ssize_t count = 0;
    while ((count = ::recv(socket_.get(), &byte, 1, 0)) > 0) {
    }
    return count < 0 && errno == ECONNRESET;
  }

  /// A window of this size for what is sent, so that a full buffer is felt early.
  void limitSendBuffer(int bytes) {
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
  }

  void endInput() { ::shutdown(socket_.get(), SHUT_WR); }

  /// Resets the connection.
  void abort() {
    const linger hard = {1, 0};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    socket_.reset();
  }

 private:
  void setPatience(double seconds) {
    timeval time = {};
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_usec = static_cast<suseconds_t>((seconds - static_cast<double>(time.tv_sec)) * 1e6);
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
  }

  wren::FileDescriptor socket_;
  bool connected_ = false;
};
