// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Generators of Gaussian kernels. Jobs use the one-dimensional one; the two-dimensional one is
// kept for its API and its tests. Sizes are odd and positive; for any other size the
// kernel is left untouched.

#pragma once

/// Fills kernel[0 .. size) with exp(-i^2 / (2 sigma^2)) over i = -size/2 .. size/2,
/// scaled so that the sum is 1.
/// @param sigma in pixels, above 0.
void generateGaussianKernel1D(int size, double sigma, double* kernel);

/// Fills kernel[0 .. size * size), row by row, with the two-dimensional Gaussian,
/// scaled so that the sum is 1.
/// @param sigmaX, sigmaY in pixels, above 0.
void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel);

namespace wren::stencil {

/// True for the sizes that have a kernel.
constexpr bool isKernelSize(int size) {
  return size > 0 && size % 2 == 1;
}

}  // namespace wren::stencil
