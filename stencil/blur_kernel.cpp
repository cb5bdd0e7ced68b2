// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include "stencil/fast_math.h"
#include "stencil/simd.h"

namespace stencil {
namespace {

// Added to a sum, this leaves the level and 13 binary places of it in the low bits
// of the float: numbers from 1024 to 2048 are 2^-13 apart. The half is the one of
// rounding; kReach moves the rounding edge up, so that sums within kReach on both
// sides of it are the ones whose places are below 2 * kReach.
constexpr int kPlaces = 13;
constexpr float kPlace = 1.0F / (1 << kPlaces);
constexpr int kReach = 2;
constexpr float kBase = 1536.0F;
constexpr float kShift = kBase + 0.5F + kReach * kPlace;
constexpr std::int32_t kPlacesMask = (1 << kPlaces) - 1;
constexpr std::int32_t kUndecidedMask = kPlacesMask & ~(2 * kReach - 1);

// How far a fast sum can be from the defined one, before and after narrowing: six
// taps times seven roundings of at most 2^-24 of the sum, one rounding to float
// and one of the added half of at most 2^-17 each, and the double sum itself.
constexpr double kSumError = 255.0 * 7.01 / (1 << 24) + 2.0 / (1 << 17) + 1e-12;
// What is left of the reach: the shifted sum is rounded to a place.
static_assert(kSumError < (kReach - 0.5) * static_cast<double>(kPlace));

double defined_sum(const float* const* taps, const BlurWeights& weights, int x) {
  double sum = 0.0;
  for (int k = 0; k < kBlurTaps; ++k) {
    sum = sum + static_cast<double>(taps[k][x]) * weights.exact[static_cast<std::size_t>(k)];
  }
  return sum;
}

float defined_level(const float* const* taps, const BlurWeights& weights, int x) {
  const int level = my_round(static_cast<float>(defined_sum(taps, weights, x)));
  return static_cast<float>(level & 255);
}

// The pairs of taps with the same weight are added first: whole numbers, so exactly.
inline F32x4 fast_sum(const float* const* taps, const F32x4 (&weights)[6], int x) {
  F32x4 sum = (load<F32x4>(taps[0] + x) + load<F32x4>(taps[10] + x)) * weights[0];
  sum = sum + (load<F32x4>(taps[1] + x) + load<F32x4>(taps[9] + x)) * weights[1];
  sum = sum + (load<F32x4>(taps[2] + x) + load<F32x4>(taps[8] + x)) * weights[2];
  sum = sum + (load<F32x4>(taps[3] + x) + load<F32x4>(taps[7] + x)) * weights[3];
  sum = sum + (load<F32x4>(taps[4] + x) + load<F32x4>(taps[6] + x)) * weights[4];
  return sum + load<F32x4>(taps[5] + x) * weights[5];
}

// Stores four levels and returns the mask of those that are not certain.
inline I32x4 blur_four(const float* const* taps, const F32x4 (&weights)[6], float* out, int x) {
  const I32x4 bits = as_ints(fast_sum(taps, weights, x) + splat(kShift));
  store(out + x, as_floats(bits & splat(~kPlacesMask)) - splat(kBase));
  return (bits & splat(kUndecidedMask)) == splat(0);
}

void redo_undecided(const float* const* taps, const BlurWeights& weights, float* out, int x,
                    I32x4 undecided) {
  for (int lane = 0; lane < 4; ++lane) {
    if (undecided[lane] != 0) out[x + lane] = defined_level(taps, weights, x + lane);
  }
}

}  // namespace

BlurWeights blur_weights(const double* kernel) {
  BlurWeights weights{};
  for (std::size_t k = 0; k < weights.exact.size(); ++k) weights.exact[k] = kernel[k];
  for (std::size_t k = 0; k < weights.rounded.size(); ++k) {
    weights.rounded[k] = static_cast<float>(kernel[k]);
  }
  return weights;
}

void blur_taps(const float* const* taps, const BlurWeights& weights, float* out, int from, int to) {
  const auto& w = weights.rounded;
  const F32x4 vectors[] = {splat(w[0]), splat(w[1]), splat(w[2]),
                           splat(w[3]), splat(w[4]), splat(w[5])};
  for (int x = from; x < to; x += 16) {
    const I32x4 a = blur_four(taps, vectors, out, x);
    const I32x4 b = blur_four(taps, vectors, out, x + 4);
    const I32x4 c = blur_four(taps, vectors, out, x + 8);
    const I32x4 d = blur_four(taps, vectors, out, x + 12);
    if (!any(a | b | c | d)) continue;
    redo_undecided(taps, weights, out, x, a);
    redo_undecided(taps, weights, out, x + 4, b);
    redo_undecided(taps, weights, out, x + 8, c);
    redo_undecided(taps, weights, out, x + 12, d);
  }
}

void blur_taps_plain(const float* const* taps, const BlurWeights& weights, float* out, int from,
                     int to) {
  for (int x = from; x < to; ++x) out[x] = defined_level(taps, weights, x);
}

}  // namespace stencil
