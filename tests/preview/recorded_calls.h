// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Records what this test program asks of the system: limits of sockets that cannot be
// read back from outside, and how often a loop comes round.

#pragma once

#include <vector>

/// Values of setsockopt() with this option of SOL_SOCKET since the last call of `forgetCalls`: an
/// int as it is, a time in milliseconds.
std::vector<long> recordedSocketOptions(int option);
/// The backlogs of listen() since then.
std::vector<long> recordedBacklogs();
/// How many calls of poll() there were since then.
long recordedPolls();
void forgetCalls();
