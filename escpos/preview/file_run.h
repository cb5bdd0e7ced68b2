// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-preview on one file or on standard input.

#pragma once

#include "escpos/preview/options.h"

namespace preview {

/// Reads the stream, writes the picture, prints listing and summary on standard output and
/// problems on standard error. Returns the exit status: 0, or 1 after anything wrong.
int runFile(const Options& options);

}  // namespace preview
