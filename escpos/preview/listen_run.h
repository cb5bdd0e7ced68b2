// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-preview --listen.

#pragma once

#include "escpos/preview/options.h"

namespace preview {

/// Serves until SIGINT or SIGTERM, which it takes over for the rest of the process. Returns the
/// exit status: 0 after such a signal, 1 if it cannot listen.
int runListener(const Options& options);

}  // namespace preview
