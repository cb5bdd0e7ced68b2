// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Completions for bash and zsh, written from the option tree.

#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace wren::cli {

/// @param shell "bash" or "zsh".
std::string writeCompletions(CLI::App& app, const std::string& shell);

}  // namespace wren::cli
