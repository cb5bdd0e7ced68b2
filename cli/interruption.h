// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// SIGHUP, SIGINT and SIGTERM while a command works: its children are stopped, its temporary files
// are removed, and the program ends with status 1.

#pragma once

#include <sys/types.h>

#include <csignal>

namespace wren::cli {

/// From now on the signals set the flag, except those that are ignored.
void watchForInterruption();

/// Names the child that the signals end with SIGTERM, at once if one has come; 0 is none. To be
/// called before the child is reaped: its number may be that of another process afterwards.
void endAtInterruption(pid_t child);

bool isInterrupted();
const volatile std::sig_atomic_t* interruptionFlag();

/// Throws a Failure if a signal has come.
void failIfInterrupted();

}  // namespace wren::cli
