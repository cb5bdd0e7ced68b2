// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Vector kernel of error diffusion: a skewed wavefront over 16 or 32 rows.
//
// Within a row each pixel needs the one on its left. But the row below can follow as soon
// as it is a few pixels behind, so one row per byte of a vector advances at a time, each
// `lag` columns behind the row above. Drawing: docs/KERNELS.md.

#pragma once

#include <cstddef>

#include "dither/allocator.h"
#include "dither/level_rows.h"

namespace wren::dither {

/// Dithers a page by error diffusion. Returns false, with nothing written, without memory
/// for its error buffer: 8 to 30 bytes, depending on the kernel, per pixel of a row of 576.
using DiffuseFunction = bool (*)(const LevelRows& rows, Allocator allocator);

/// The vector kernel of row `method` of `kMethods` for the current `vectorLevel()`. Null if
/// the row is not vectorised, and at the scalar level.
DiffuseFunction wavefrontKernel(std::size_t method);

}  // namespace wren::dither
