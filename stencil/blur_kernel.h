// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The one sum that the unsharp mask spends its time on: eleven taps of a
// symmetric Gaussian, rounded to a level. The fast version works in single
// precision, four pixels at a time, and knows how far it can be off; the few sums
// that lie that close to a rounding edge are done again as they are defined.

#pragma once

#include <array>

namespace stencil {

inline constexpr int kBlurTaps = 11;

/// The weights in double as they define the result, and the six different ones in
/// single precision, from the outermost tap to the middle.
struct BlurWeights {
  std::array<double, kBlurTaps> exact;
  std::array<float, kBlurTaps / 2 + 1> rounded;
};

/// `kernel` has kBlurTaps entries, is symmetric, has no negative entry and adds up
/// to 1 within a few units in the last place.
BlurWeights blur_weights(const double* kernel);

/// One pass over columns from <= x < to: out[x] is the rounded sum of
/// taps[k][x] * weight k, added in double in the order of the taps, narrowed to
/// float and rounded with my_round. The taps hold whole numbers from 0 to 255.
///
/// Precondition: to - from is a multiple of 16. The taps may overlap each other,
/// the output overlaps none of them.
void blur_taps(const float* const* taps, const BlurWeights& weights, float* out, int from, int to);

/// The same as it is defined, pixel by pixel, for any range.
void blur_taps_plain(const float* const* taps, const BlurWeights& weights, float* out, int from,
                     int to);

}  // namespace stencil
