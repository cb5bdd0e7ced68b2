// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes a picture as a PNG file.

#pragma once

#include <string>

#include "escpos/preview/picture.h"

namespace preview {

/// Writes `picture` to `path`, with its resolution, one row in memory at a time. Returns an empty
/// text, or else what went wrong; then no file of that name is left behind. The picture must not
/// be empty.
std::string writePng(Picture& picture, const std::string& path);

}  // namespace preview
