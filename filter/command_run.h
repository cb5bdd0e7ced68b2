// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One run of the filter for commands as the print system starts it: arguments, the command file,
// settings, the bytes of each command.

#pragma once

#include "filter/cancel_signal.h"

namespace wren::filter {

/// @param argv the program path, job id, user, title, copies, job options and, optionally, the
///   command file; without one standard input is read.
/// @return the exit status: 0 if at least one command was done or the job was cancelled, 1
///   otherwise. What is not done is one "ERROR:" line each.
int runCommandFilter(int argc, char** argv, const CancelSignal& cancel);

}  // namespace wren::filter
