// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the program of this process is.

#pragma once

#include <string>

namespace wren {

/// The absolute path of the file that this process runs, links resolved; empty where the system
/// does not tell.
std::string ownProgram();

}  // namespace wren
