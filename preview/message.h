// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The messages of wren-preview on standard error.

#pragma once

#include <string>

namespace wren::preview {

/// Writes "wren-preview: TEXT" and a newline to standard error.
void printMessage(const std::string& text);

}  // namespace wren::preview
