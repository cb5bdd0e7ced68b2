// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error diffusion in plain C++, for every kernel and every processor. It is the
// twin that judges the vector kernel, and what runs where that is not built.
//
// Instead of spreading a pixel's error to its neighbours, each pixel collects
// what its neighbours would have sent, in the order in which they would have
// sent it: the rows above as vector additions along the row, then the two
// pixels to the left one by one.

#ifndef WREN_BITMAP_DIFFUSION_PLAIN_H_
#define WREN_BITMAP_DIFFUSION_PLAIN_H_

#include "dither/allocator.h"
#include "dither/level_rows.h"
#include "dither/methods.h"

/// Diffuses a page. Returns false, with nothing written, when there is no memory
/// for its working rows.
bool diffusePlain(const DiffusionKernel& kernel, const LevelRows& rows,
                  BitmapAllocator allocator = nullptr);

#endif  // WREN_BITMAP_DIFFUSION_PLAIN_H_
