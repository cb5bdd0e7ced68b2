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

// Without SA_RESTART, so that a wait for a child ends.
void watchForInterruption() {
  struct sigaction action = {};
  action.sa_handler = onInterruption;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
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
