// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error diffusion on sixteen rows at once.
//
// A pixel needs the one to its left, so a row can only be done pixel by pixel.
// But the row below may follow as soon as it is a few pixels behind, the next
// row again, and so on: a slanted front moves across the page, and the sixteen
// pixels on it are the sixteen lanes of a vector register.
//
// Every row is `lag` columns behind the one above it, and a lane that reaches
// the end of its row goes on with the row sixteen below. The lag is such that
// this is again `lag` columns behind: 16 lags and one step are one row with its
// gap. The shares that the pixels send are kept in the order in which they are
// made, 16 bytes per step, and in that string of bytes the pixel above stands
// always the same distance back, whichever lane it is in: 16 * lag + 1 bytes.
// Reading sixteen bytes from there gives every lane the share of the row above,
// and the first lane that of the last lane of the round before.

#ifndef WREN_BITMAP_DIFFUSION_WAVEFRONT_H_
#define WREN_BITMAP_DIFFUSION_WAVEFRONT_H_

#include "dither/allocator.h"
#include "dither/level_rows.h"
#include "dither/methods.h"

/// Diffuses a page by one of the kernels for which it is instantiated: the five
/// from kBurkes to kStevensonArce. The same dots as diffusePlain. Returns false,
/// with nothing written, when there is no memory for its working bytes: 8 to 30,
/// depending on the kernel, for each pixel of a row of 576.
///
/// Defined where WREN_HAS_BYTE_VECTORS is (see bitmap/byte_vector.h).
template <const DiffusionKernel& Kernel>
bool diffuseWavefront(const LevelRows& rows, BitmapAllocator allocator = nullptr);

#endif  // WREN_BITMAP_DIFFUSION_WAVEFRONT_H_
