// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The dithers without diffusion: fixed threshold, ordered and Bayer. Each is one
// comparison of a pixel with a threshold that repeats every four columns and
// rows.

#ifndef WREN_BITMAP_THRESHOLD_CELLS_H_
#define WREN_BITMAP_THRESHOLD_CELLS_H_

#include "dither/level_rows.h"
#include "dither/methods.h"

/// Makes every pixel white whose level is above its threshold in `cell`.
void ditherByThresholds(const ThresholdCell& cell, const LevelRows& rows);

/// The same, one pixel after the other: what the above is compared with.
void ditherByThresholdsPlain(const ThresholdCell& cell, const LevelRows& rows);

#endif  // WREN_BITMAP_THRESHOLD_CELLS_H_
