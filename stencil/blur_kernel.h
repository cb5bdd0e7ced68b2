// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One pass of the Gaussian blur, the most expensive sum of the unsharp mask. The
// vector kernel works in fixed point with a known error bound; the few sums that lie
// within the bound of a rounding edge are computed again in double.

#pragma once

#include <array>
#include <cstdint>

#include "stencil/recipe.h"

namespace wren::stencil {

/// Rows of the unsharp mask hold levels in sixteenths: 255 is 4080.
inline constexpr int kLevelFractionBits = 4;

/// The taps of the blur, in double as the result is defined, and in fixed point:
/// `upper` in units of 2^-`kWeightBits`, `lower` in units of 2^-16 of those. Because the
/// kernel is symmetric, fixed point needs only the taps from the outermost to the middle one.
struct BlurWeights {
  static constexpr int kWeightBits = 17;

  std::array<double, kUnsharpSize> exact;
  std::array<std::int16_t, kBlurRadius + 1> upper;
  std::array<std::int16_t, kBlurRadius + 1> lower;
};

/// @param kernel `kUnsharpSize` entries, symmetric, from 0 up to, not including, 0.2499, with a
///   sum of 1 within a few units in the last place.
BlurWeights blurWeights(const double* kernel);

/// One pass over the columns from <= x < to: out[x] is the rounded sum of
/// rows[k][x] * weight k. The sum is defined as double, in the order of the taps,
/// narrowed to float and rounded with `my_round`. Inputs and outputs are whole levels from 0
/// to 255, in sixteenths.
///
/// Precondition: `to - from` is a multiple of 16. The input rows may overlap each other
/// but not the output.
void blur(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out, int from,
          int to);

}  // namespace wren::stencil
