// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The listening mode of wren-preview: `--listen`.

#pragma once

#include "preview/options.h"

namespace wren::preview {

/// Serves jobs until SIGINT or SIGTERM. Installs handlers for both and ignores SIGPIPE, for the
/// rest of the process.
/// @return the exit status: 0 after one of these signals, 1 if the socket fails.
int runListener(const Options& options);

}  // namespace wren::preview
