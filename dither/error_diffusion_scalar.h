// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error diffusion in portable C++, for every kernel. Jobs reach it only on processors
// without vectors; elsewhere it runs Floyd-Steinberg, which no job selects.
//
// A pixel does not spread its error; each pixel collects its neighbours' error terms in
// scan order. Those from the rows above are added row by row, those from the left pixel
// by pixel.

#pragma once

#include "dither/allocator.h"
#include "dither/level_rows.h"
#include "dither/methods.h"

namespace wren::dither {

/// Dithers a page by error diffusion.
/// @return false, with nothing written, without memory for a few rows of error terms.
bool diffuseScalar(const DiffusionKernel& kernel, const LevelRows& rows,
                   Allocator allocator = nullptr);

}  // namespace wren::dither
