// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One pass of the Gaussian blur, the most expensive sum of the unsharp mask. The
// vector kernel works in single precision with a known error bound; the few sums
// that lie within the bound of a rounding edge are computed again in double.

#pragma once

#include <array>

#include "stencil/recipe.h"

namespace wren::stencil {

/// The taps of the blur, in double as the result is defined. Because the kernel is
/// symmetric, single precision needs only the taps from the outermost to the middle one.
struct BlurWeights {
  std::array<double, kUnsharpSize> exact;
  std::array<float, kBlurRadius + 1> rounded;
};

/// @param kernel `kUnsharpSize` entries, symmetric, not negative, with a sum of 1
///   within a few units in the last place.
BlurWeights blurWeights(const double* kernel);

/// One pass over the columns from <= x < to: out[x] is the rounded sum of
/// rows[k][x] * weight k. The sum is defined as double, in the order of the taps,
/// narrowed to float and rounded with `my_round`. Inputs are whole numbers from 0 to 255.
///
/// Precondition: `to - from` is a multiple of 16. The input rows may overlap each other
/// but not the output.
void blur(const float* const* rows, const BlurWeights& weights, float* out, int from, int to);

}  // namespace wren::stencil
