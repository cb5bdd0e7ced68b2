// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/interruption.h"

#include "cli/failure.h"

namespace wren::cli {
namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterruption(int /*signal*/) {
  interrupted = 1;
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
