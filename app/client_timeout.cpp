// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/client_timeout.h"

#include <atomic>

#ifndef __APPLE__
#include <cups/http.h>
#include <dlfcn.h>
#include <sys/socket.h>

namespace {

// The function that it is for gets no context.
std::atomic<std::chrono::seconds> timeLimit{std::chrono::seconds(0)};

// The result alone ends only one read, and PAPPL reads again: without a connection it cannot.
int dropClient(http_t* connection, void* /*context*/) {
  ::shutdown(httpGetFd(connection), SHUT_RDWR);
  return 0;
}

using Accept = http_t* (*)(int, int);

}  // namespace

// Replaces the function of libcups for every caller of the process: PAPPL is the one.
extern "C" http_t* httpAcceptConnection(int listener, int blocking) {
  static const auto kAccept = reinterpret_cast<Accept>(dlsym(RTLD_NEXT, "httpAcceptConnection"));
  http_t* connection = kAccept == nullptr ? nullptr : kAccept(listener, blocking);
  const std::chrono::duration<double> seconds = timeLimit.load();
  if (connection != nullptr && seconds.count() > 0) {
    httpSetTimeout(connection, seconds.count(), dropClient, nullptr);
  }
  return connection;
}

namespace wren::app {

void setClientTimeout(std::chrono::seconds limit) {
  timeLimit = limit;
}

}  // namespace wren::app
#else
namespace wren::app {

void setClientTimeout(std::chrono::seconds /*limit*/) {}

}  // namespace wren::app
#endif
