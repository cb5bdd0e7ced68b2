// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/end_signal.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace wren::app {
namespace {

std::atomic<bool> hasEndSignal = false;
static_assert(std::atomic<bool>::is_always_lock_free);

std::atomic<void (*)(int)> handlerOfPappl = nullptr;
static_assert(std::atomic<void (*)(int)>::is_always_lock_free);

void noteEnd(int signal) {
  hasEndSignal = true;
  handlerOfPappl.load()(signal);
}

}  // namespace

void watchForEndSignals() {
  for (const int signal : {SIGTERM, SIGINT}) {
    struct sigaction action = {};
    const bool isKnown = ::sigaction(signal, nullptr, &action) == 0;
    if (!isKnown || action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN ||
        action.sa_handler == noteEnd) {
      continue;
    }
    handlerOfPappl = action.sa_handler;
    action.sa_handler = noteEnd;
    ::sigaction(signal, &action, nullptr);
  }
}

bool isEnding(pappl_system_t* system) {
  // A system that does not run yet is shut down as well, to PAPPL.
  return hasEndSignal || (papplSystemIsRunning(system) && papplSystemIsShutdown(system));
}

}  // namespace wren::app
