// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/preview/failing_accept.h"

#include <sys/socket.h>

#include <cerrno>
#include <mutex>

namespace {

std::mutex mutex;
std::vector<int> waiting;

// 0 if there is none.
int nextError() {
  const std::lock_guard lock(mutex);
  if (waiting.empty()) return 0;
  const int error = waiting.front();
  waiting.erase(waiting.begin());
  return error;
}

}  // namespace

void failNextAccepts(const std::vector<int>& errors) {
  const std::lock_guard lock(mutex);
  waiting = errors;
}

std::size_t acceptErrorsLeft() {
  const std::lock_guard lock(mutex);
  return waiting.size();
}

extern "C" int accept(int socket, sockaddr* address, socklen_t* length) {
  const int error = nextError();
  if (error == 0) return accept4(socket, address, length, 0);
  errno = error;
  return -1;
}
