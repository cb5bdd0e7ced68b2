// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The file mode of wren-preview: one stream, from a file or standard input.

#pragma once

#include "preview/options.h"

namespace wren::preview {

/// Reads the stream and writes the picture. Listing, summary and picture names go to standard
/// output, messages to standard error.
/// @return the exit status: 0, or 1 after any problem or error.
int runFile(const Options& options);

}  // namespace wren::preview
