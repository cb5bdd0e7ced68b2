// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/slow_printer.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace wren_test {
namespace {

constexpr int kLookMs = 5;

bool isReadable(int descriptor) {
  pollfd wanted = {descriptor, POLLIN, 0};
  return ::poll(&wanted, 1, kLookMs) == 1;
}

}  // namespace

// Bound without listening, the port is taken and refuses.
SlowPrinter::SlowPrinter() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const name = reinterpret_cast<sockaddr*>(&address);
  // A small window, so that a client that is not read from stops soon.
  const int window = 4096;
  ::setsockopt(listener_.get(), SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
  if (::bind(listener_.get(), name, length) != 0 ||
      ::getsockname(listener_.get(), name, &length) != 0) {
    ADD_FAILURE() << "no port for the printer";
  }
  port_ = ntohs(address.sin_port);
}

SlowPrinter::~SlowPrinter() {
  stopping_ = true;
  if (thread_.joinable()) thread_.join();
}

std::string SlowPrinter::uri() const {
  return "socket://127.0.0.1:" + std::to_string(port_) + "/?status=off";
}

void SlowPrinter::comeBack(std::size_t limit) {
  limit_ = limit;
  if (::listen(listener_.get(), 4) != 0) ADD_FAILURE() << "the printer cannot listen";
  thread_ = std::thread([this] { serve(); });
}

void SlowPrinter::readOn() {
  limit_ = kAll;
}

std::vector<std::string> SlowPrinter::received() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> filled;
  for (const auto& bytes : received_) {
    if (!bytes.empty()) filled.push_back(bytes);
  }
  return filled;
}

bool SlowPrinter::waitForBytes(std::size_t count) const {
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < until) {
    std::size_t sum = 0;
    for (const auto& bytes : received()) sum += bytes.size();
    if (sum >= count) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

void SlowPrinter::serve() {
  while (!stopping_) {
    if (!isReadable(listener_.get())) continue;
    const wren::FileDescriptor client(::accept(listener_.get(), nullptr, nullptr));
    if (client) serveOne(client.get());
  }
}

void SlowPrinter::serveOne(int client) {
  {
    const std::lock_guard lock(mutex_);
    received_.emplace_back();
  }
  std::array<char, 65536> block;
  std::size_t sum = 0;
  while (!stopping_) {
    const std::size_t left = limit_ - std::min<std::size_t>(sum, limit_);
    if (left == 0) {
      // A client that has died is let go.
      pollfd gone = {client, POLLRDHUP, 0};
      if (::poll(&gone, 1, kLookMs) == 1) return;
      continue;
    }
    if (!isReadable(client)) continue;
    const ssize_t count = ::recv(client, block.data(), std::min(left, block.size()), 0);
    if (count <= 0) return;
    sum += static_cast<std::size_t>(count);
    const std::lock_guard lock(mutex_);
    received_.back().append(block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace wren_test
