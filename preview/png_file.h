// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes a picture as a PNG file.

#pragma once

#include <cstdint>
#include <string>

#include "common/cancel_check.h"
#include "preview/paper_picture.h"
#include "preview/picture.h"

namespace wren::preview {

struct PngRules {
  CancelCheck cancel;                  ///< asked before each row
  bool keepExisting = false;           ///< an existing file is an error
  std::uint64_t maxRows = UINT64_MAX;  ///< the picture is cut off after these rows
  bool isFast = false;                 ///< compresses less, in a quarter of the time
};

/// Writes `picture` with its resolution to `path`. One row is in memory at a time. After an error
/// the incomplete file is removed, unless `path` is a device or a pipe.
/// @param picture must not be empty.
/// @return the error message ("cancelled" if it was), or an empty string.
std::string writePng(PaperPicture& picture, const std::string& path, const PngRules& rules = {});

/// The same for a grey picture, which has no resolution.
std::string writePng(const Picture& picture, const std::string& path);

/// The bytes of such a file, in memory. Throws std::bad_alloc.
/// @param picture must not be empty.
/// @return nothing if it was cancelled or libpng failed.
std::string pngBytes(PaperPicture& picture, const PngRules& rules = {});

/// Whether a file is a PNG that `writePng` wrote: it names Wren as its software. Another file is
/// not replaced unless its user names it.
bool isOwnPng(const std::string& path);

}  // namespace wren::preview
