// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A TCP client on the loopback address, for tests of the print server.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>
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

  /// Resets the connection.
  void abort() {
    const linger hard = {1, 0};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    socket_.reset();
  }

 private:
  wren::FileDescriptor socket_;
  bool connected_ = false;
};
