// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program wren-printer-app: the sub-commands of PAPPL's main loop and our own.

#pragma once

namespace wren::app {

/// @return the exit status.
int runProgram(int argc, char** argv);

}  // namespace wren::app
