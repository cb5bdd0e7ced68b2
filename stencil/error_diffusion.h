// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion of the stencil method on whole images: six taps, a global threshold, and
// a correction for black neighbours. Not used by jobs, which run `WavefrontDiffuser`; kept for
// its API and its tests.

#pragma once

#include "stencil/qv_image.h"

/// A new `QV_IMG_GRAY` image of the same size that holds only 0 and 255. A pixel
/// becomes 255 when its level plus its error terms are strictly above `threshold`. Errors
/// are single precision and never clamped. All rows run from left to right; error terms
/// beyond the edges are dropped.
QVImage edf_cus(const QVImage& image, int threshold);
