// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Sends a command to the control port of a listening wren-preview: `--tell`.

#pragma once

#include "preview/options.h"

namespace wren::preview {

/// Sends `options.tellCommand` and prints the answer.
/// @return the exit status: 0, or 1 if the command is refused or the port does not answer.
int runTell(const Options& options);

}  // namespace wren::preview
