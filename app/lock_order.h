// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Keeps PAPPL 1.3.1 from locking itself up. It refuses a raster job while another one prints: with
// the printer locked it locks the system for writing, to note when to clean up. Everybody else,
// such as the function that saves the state, locks the system before the printer.

#pragma once

#include <pappl/pappl.h>

namespace wren::app {

/// From now on a thread of this process that holds a lock of PAPPL for writing does not wait for
/// ever for the system's: after `kLockPatienceMs` it goes on without. All that PAPPL does there is
/// to set a time. Does nothing on macOS.
void keepLockOrder(pappl_system_t* system);

inline constexpr int kLockPatienceMs = 100;

}  // namespace wren::app
