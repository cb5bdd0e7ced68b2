// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Gaussian smoothing of grey images: the kernel generators, one pass of the
// separable filter, the separable filter and the direct two-dimensional one.
// Borders repeat the edge pixel. Kernel sizes are odd and positive; for any other
// size the generators leave the kernel untouched and the filters return a copy.

#pragma once

#include "stencil/qv_image.h"

/// 2 pi in single precision, as the one-dimensional generator uses it.
inline constexpr float kTwoPiSingle = 6.2831853071795864769F;
/// 2 pi in double precision, as the two-dimensional generator uses it.
inline constexpr double kTwoPi = 6.283185307179586;

/// Fills kernel[0 .. size) with exp(-i^2 / (2 sigma^2)) over i = -size/2 .. size/2,
/// scaled so that the entries add up to 1. `sigma` is in pixels, above 0.
void generateGaussianKernel1D(int size, double sigma, double* kernel);

/// Fills kernel[0 .. size * size), row by row, with the two-dimensional Gaussian,
/// scaled so that the entries add up to 1. The sigmas are in pixels, above 0.
void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel);

/// Convolves the rows (`horizontal`) or the columns of a grey image with `size`
/// taps. Each pixel is the sum in double, in the order of the taps, narrowed to
/// float, rounded, and stored as its low byte.
QVImage convolve1D(const QVImage& image, const double* kernel, int size, bool horizontal);

/// The separable Gaussian: rows, rounded to bytes, then columns.
QVImage enh_gaussian_filter_fast(const QVImage& image, int size, double sigma);

/// The direct Gaussian with size * size taps per pixel; the result is QV_IMG_GRAY.
QVImage enh_gaussian_filter(const QVImage& image, int size, double sigmaX, double sigmaY);
