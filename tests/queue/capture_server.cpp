// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/queue/capture_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace {

constexpr auto kTimeout = std::chrono::seconds(30);

int listenOnLoopback(int* port, int bufferBytes) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bufferBytes > 0) {
    setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &bufferBytes, sizeof bufferBytes);
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, length) != 0 || listen(listener, 4) != 0 ||
      getsockname(listener, generic, &length) != 0) {
    throw std::runtime_error("cannot listen on 127.0.0.1");
  }
  *port = ntohs(address.sin_port);
  return listener;
}

}  // namespace

CaptureServer::CaptureServer(int bufferBytes) : listener_(listenOnLoopback(&port_, bufferBytes)) {
  thread_ = std::thread([this] { serve(); });
}

CaptureServer::~CaptureServer() {
  release();
  shutdown(listener_, SHUT_RDWR);
  thread_.join();
  close(listener_);
}

void CaptureServer::holdAfter(std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  holdAfter_ = bytes;
}

void CaptureServer::release() {
  const std::lock_guard lock(mutex_);
  holdAfter_ = SIZE_MAX;
  held_ = false;
  changed_.notify_all();
}

bool CaptureServer::waitUntilHeld() {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kTimeout, [this] { return held_; });
}

std::vector<CaptureServer::Connection> CaptureServer::take(std::size_t count) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kTimeout, [&] { return finished_.size() >= count; });
  return std::exchange(finished_, {});
}

void CaptureServer::serve() {
  for (int connection; (connection = accept(listener_, nullptr, nullptr)) >= 0;) {
    readAll(connection);
    close(connection);
  }
}

void CaptureServer::readAll(int connection) {
  Connection received;
  std::array<std::uint8_t, 4096> part;
  for (;;) {
    waitWhileHeld(received.bytes.size());
    const auto count = read(connection, part.data(), part.size());
    if (count > 0 || received.bytes.empty()) received.lastByte = std::chrono::steady_clock::now();
    if (received.bytes.empty()) received.firstByte = received.lastByte;
    if (count <= 0) break;
    received.bytes.insert(received.bytes.end(), part.begin(), part.begin() + count);
  }
  const std::lock_guard lock(mutex_);
  finished_.push_back(std::move(received));
  changed_.notify_all();
}

void CaptureServer::waitWhileHeld(std::size_t soFar) {
  std::unique_lock lock(mutex_);
  if (soFar < holdAfter_) return;
  held_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return !held_; });
}
