// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Sharpening by an unsharp mask: the difference between a grey image and its
// Gaussian blur is added to the image.

#pragma once

#include "stencil/qv_image.h"

/// The sigma of the blur in pixels, whatever the size of its kernel.
inline constexpr double kUnsharpSigma = 3.0;
/// Amounts are given in percent.
inline constexpr float kUnsharpDivisor = 100.0F;

/// Each pixel becomes (1 + weight) * image - weight * blurred, in single
/// precision, rounded and clamped to 0..255. Both images are grey and of the size
/// of `image`.
///
/// Precondition: |weight| is at most 4e6, so that results fit in an int.
QVImage add_Weighted(const QVImage& image, const QVImage& blurred, float weight);

/// The image sharpened by `amount` percent with a blur of `size` taps in each
/// direction (odd; any other size leaves the image as it is).
QVImage enh_unsharp_mask(const QVImage& image, float amount, int size);
