// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Ordered dither: compares each pixel with a threshold matrix that repeats over the page.
// Also runs the fixed threshold, whose matrix has one value.

#pragma once

#include "dither/level_rows.h"
#include "dither/methods.h"

namespace wren::dither {

/// Makes a pixel white where its level is above its threshold, else black.
void ditherOrdered(const ThresholdMatrix& thresholds, const LevelRows& rows);

}  // namespace wren::dither
