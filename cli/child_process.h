// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Runs other programs: a list of arguments, never a shell.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

using Arguments = std::vector<std::string>;

/// The status of a child whose program could not be started.
inline constexpr int kNotStarted = 127;

/// The path of a program in PATH, or in the folders for administrators, which are not in a user's
/// PATH; empty if there is none.
std::string findProgram(const std::string& name);

/// Runs a program to its end, with nothing on its standard input.
/// @param output descriptor for its standard output; -1 discards it. Not closed.
/// @param error the same for standard error.
/// @return its exit status, 128 and the number of the signal that ended it, or `kNotStarted`.
///   Throws a Failure after an interruption.
int runChild(const Arguments& command, int output, int error);

struct ChildOutput {
  int status = kNotStarted;
  std::string text;  ///< of standard output; 1 MB at most
};

/// Runs a program and keeps its standard output. It is killed after `seconds`.
ChildOutput captureOutput(const Arguments& command, int seconds);

/// Replaces this process by a program. Returns only if that fails.
void becomeProgram(const Arguments& command);

}  // namespace wren::cli
