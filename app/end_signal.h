// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether the process was asked to end. PAPPL keeps that to itself until its jobs have ended.

#pragma once

namespace wren::app {

/// Puts a handler before those of PAPPL for SIGTERM and SIGINT, once; for a system that runs:
/// PAPPL sets its own when it starts.
void watchForEndSignals();

/// Whether one of them came: no further job begins.
bool hasEndSignal();

}  // namespace wren::app
