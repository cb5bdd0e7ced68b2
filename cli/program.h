// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The program `wren` as a function: arguments in, exit status out.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

/// Runs one command. Results go to standard output, one line about a failure to standard error.
/// @param arguments without the name of the program.
/// @return the exit status (cli/failure.h).
int runProgram(const std::vector<std::string>& arguments);

}  // namespace wren::cli
