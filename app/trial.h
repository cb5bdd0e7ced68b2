// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// `wren-printer-app trial`: one printer in the foreground, on loopback, for trials and tests.
// `./wren app` calls it.

#pragma once

namespace wren::app {

/// @param argv "trial" and its options.
/// @return the exit status: 0 after SIGTERM or SIGINT.
int runTrial(int argc, char** argv);

}  // namespace wren::app
