// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Gaussian smoothing of grey images: one pass of the separable filter, the separable
// filter, and the direct two-dimensional one. Not used by jobs, which blur with blur_kernel;
// kept for its API and its tests. Borders repeat the edge pixel. Kernel sizes are odd and positive;
// for any other size the result is a copy.

#pragma once

#include "stencil/qv_image.h"

/// Convolves the rows (`horizontal`) or the columns of a grey image with `size`
/// taps. Each pixel is the sum in double, in the order of the taps, narrowed to
/// float, rounded, and stored as its low byte.
QVImage convolve1D(const QVImage& image, const double* kernel, int size, bool horizontal);

/// The separable Gaussian: rows, rounded to bytes, then columns.
QVImage enh_gaussian_filter_fast(const QVImage& image, int size, double sigma);

/// The direct Gaussian with size * size taps per pixel; the result is `QV_IMG_GRAY`.
QVImage enh_gaussian_filter(const QVImage& image, int size, double sigmaX, double sigmaY);
