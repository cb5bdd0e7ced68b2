// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

// With it, the C library defines poll() in its header.
#undef _FORTIFY_SOURCE

#include "tests/preview/recorded_calls.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <mutex>
#include <utility>

namespace {

// Never destroyed, because threads of a test may end after it.
struct Calls {
  std::mutex mutex;
  std::vector<std::pair<int, long>> options;
  std::vector<long> backlogs;
  std::atomic<long> polls = 0;
};

Calls& calls() {
  static auto* const kCalls = new Calls;
  return *kCalls;
}

long valueOf(const void* value, socklen_t length) {
  if (length == sizeof(timeval)) {
    timeval time = {};
    std::memcpy(&time, value, sizeof time);
    return time.tv_sec * 1000 + time.tv_usec / 1000;
  }
  int number = 0;
  std::memcpy(&number, value, sizeof number);
  return number;
}

}  // namespace

std::vector<long> recordedSocketOptions(int option) {
  const std::lock_guard lock(calls().mutex);
  std::vector<long> values;
  for (const auto& [one, value] : calls().options) {
    if (one == option) values.push_back(value);
  }
  return values;
}

std::vector<long> recordedBacklogs() {
  const std::lock_guard lock(calls().mutex);
  return calls().backlogs;
}

long recordedPolls() {
  return calls().polls;
}

void forgetCalls() {
  calls().polls = 0;
  const std::lock_guard lock(calls().mutex);
  calls().options.clear();
  calls().backlogs.clear();
}

extern "C" int setsockopt(int socket, int level, int option, const void* value,
                          socklen_t length) noexcept {
  if (level == SOL_SOCKET && length >= sizeof(int)) {
    const std::lock_guard lock(calls().mutex);
    calls().options.emplace_back(option, valueOf(value, length));
  }
  return static_cast<int>(::syscall(SYS_setsockopt, socket, level, option, value, length));
}

extern "C" int listen(int socket, int backlog) noexcept {
  {
    const std::lock_guard lock(calls().mutex);
    calls().backlogs.push_back(backlog);
  }
  return static_cast<int>(::syscall(SYS_listen, socket, backlog));
}

extern "C" int poll(pollfd* descriptors, nfds_t count, int timeoutMs) {
  ++calls().polls;
  const std::timespec timeout = {timeoutMs / 1000, (timeoutMs % 1000) * 1'000'000L};
  return ::ppoll(descriptors, count, timeoutMs < 0 ? nullptr : &timeout, nullptr);
}
