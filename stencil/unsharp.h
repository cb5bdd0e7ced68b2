// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The unsharp mask on images: adds the weighted difference between a grey image and its
// Gaussian blur to the image. Not used by jobs, which run `SharpRows`; kept for its API and its
// tests.

#pragma once

#include "stencil/qv_image.h"

/// Each pixel becomes (1 + weight) * image - weight * blurred, in single
/// precision, rounded and clamped to 0..255. Both images are grey and of the same size.
///
/// Precondition: |weight| is at most 4e6, so that results fit in an int.
QVImage add_Weighted(const QVImage& image, const QVImage& blurred, float weight);

/// Sharpens by `amount` percent with a blur of `size` taps in each direction and the
/// sigma of the recipe. A size that is even or not positive leaves the pixels unchanged.
QVImage enh_unsharp_mask(const QVImage& image, float amount, int size);
