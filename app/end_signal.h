// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether the process was asked to end. PAPPL keeps a signal to itself until its jobs have ended.

#pragma once

#include <pappl/pappl.h>

namespace wren::app {

/// Puts a handler before those of PAPPL for SIGTERM and SIGINT, once; for a system that runs:
/// PAPPL sets its own when it starts.
void watchForEndSignals();

/// Whether one of them came, or a client asked the running system to shut down: no further job
/// begins.
bool isEnding(pappl_system_t* system);

}  // namespace wren::app
