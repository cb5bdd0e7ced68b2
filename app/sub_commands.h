// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The sub-commands of our own beside those of PAPPL: commands for a printer, and what its status
// adds.

#pragma once

#include <string_view>

namespace wren::app {

/// Whether it is one of drawer, beep, cut, feed and selftest.
bool isPrinterCommand(std::string_view name);

/// Sends a command to a printer and waits until it is done; says what it waits for.
/// @param argv the program, one of the names above, its arguments.
/// @return the exit status: 0 done, 1 failed, 2 wrong usage.
int runPrinterCommand(int argc, char** argv);

/// Prints how the printers are, after the output of PAPPL's `status` with the same arguments.
/// Prints nothing where no server runs: PAPPL has said it.
void printConditions(int argc, char** argv);

}  // namespace wren::app
