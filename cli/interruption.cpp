// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/interruption.h"

#include <signal.h>

#include <cerrno>

#include "cli/failure.h"

namespace wren::cli {
namespace {

volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t childToEnd = 0;

extern "C" void onInterruption(int /*signal*/) {
  const int reason = errno;
  interrupted = 1;
  if (childToEnd != 0) kill(childToEnd, SIGTERM);
  errno = reason;
}

}  // namespace

// Without SA_RESTART, so that a wait for a child ends. What nohup or a shell ignores for this
// process stays ignored.
void watchForInterruption() {
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action = {};
    if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = onInterruption;
    sigaction(number, &action, nullptr);
  }
}

// A signal that comes before a wait would not end the wait; the end of the child does.
void endAtInterruption(pid_t child) {
  childToEnd = child;
  if (child != 0 && isInterrupted()) kill(child, SIGTERM);
}

bool isInterrupted() {
  return interrupted != 0;
}

const volatile std::sig_atomic_t* interruptionFlag() {
  return &interrupted;
}

void failIfInterrupted() {
  if (isInterrupted()) throw Failure(kFailed, "interrupted");
}

}  // namespace wren::cli
