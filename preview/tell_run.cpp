// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/tell_run.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <cstdio>
#include <string>

#include "preview/loopback_socket.h"
#include "preview/message.h"

namespace wren::preview {
namespace {

constexpr timeval kPatience = {10, 0};

// Up to the newline; empty if the other side closes the connection or says nothing.
std::string readLine(int socket) {
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
  std::string line;
  char byte = 0;
  while (::recv(socket, &byte, 1, 0) == 1) {
    if (byte == '\n') return line;
    line += byte;
  }
  return {};
}

int fail(const std::string& text) {
  printMessage(text);
  return 1;
}

}  // namespace

int runTell(const Options& options) {
  const LoopbackSocket port = connectLoopbackSocket(*parseListenAddress(options.tellAddress));
  if (!port.socket) return fail(options.tellAddress + ": " + port.error);
  const std::string answer =
      sendNow(port.socket.get(), options.tellCommand + "\n") ? readLine(port.socket.get()) : "";
  if (answer.empty()) return fail(options.tellAddress + ": no answer");
  if (answer.starts_with("error: ")) return fail(answer.substr(7));
  std::printf("%s\n", answer.c_str());
  return std::fflush(stdout) == 0 ? 0 : fail("standard output cannot be written");
}

}  // namespace wren::preview
