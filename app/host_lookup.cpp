// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/host_lookup.h"

#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kCancelLatency = std::chrono::milliseconds(50);

HostLookup lookUp(const std::string& host, const std::string& port, int flags) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV | flags;
  addrinfo* list = nullptr;
  const int code = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &list);
  if (code != 0) return {nullptr, ::gai_strerror(code)};
  return {AddressList(list), {}};
}

// Shared by the caller and the thread; the last of the two deletes it.
struct Pending {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  HostLookup result;
};

void lookUpInto(const std::shared_ptr<Pending>& pending, const std::string& host,
                const std::string& port) {
  HostLookup result = lookUp(host, port, 0);
  const std::lock_guard lock(pending->mutex);
  pending->result = std::move(result);
  pending->done = true;
  pending->changed.notify_all();
}

}  // namespace

HostLookup findHost(const std::string& host, const std::string& port, Clock::time_point deadline,
                    const CancelCheck& cancel) {
  HostLookup numeric = lookUp(host, port, AI_NUMERICHOST);
  if (numeric.addresses != nullptr) return numeric;
  const auto pending = std::make_shared<Pending>();
  try {
    std::thread(lookUpInto, pending, host, port).detach();
  } catch (const std::system_error& error) {
    return {nullptr, error.what()};
  }
  std::unique_lock lock(pending->mutex);
  while (!pending->done && Clock::now() < deadline && !cancel.isCancelled()) {
    pending->changed.wait_until(lock, std::min(deadline, Clock::now() + kCancelLatency));
  }
  return std::move(pending->result);
}

}  // namespace wren::app
