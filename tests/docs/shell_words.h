// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Splits a line of shell into its simple commands, as far as the documents use
// the shell: quotes, pipes, lists, redirections, comments and variables before a
// command.

#pragma once

#include <string>
#include <vector>

namespace wren_test {

/// The words of one simple command, without quotes, redirections, variables and `sudo`.
using SimpleCommand = std::vector<std::string>;

std::vector<SimpleCommand> simpleCommands(const std::string& line);

}  // namespace wren_test
