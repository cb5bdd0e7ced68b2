// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include <cstddef>

#include "stencil/fast_math.h"
#include "stencil/simd.h"

namespace wren::stencil {
namespace {

// Adding `kShift` leaves the rounded level and `kFractionBits` bits of fraction in the
// low bits of the float: floats from 1024 to 2048 are 2^-13 apart. `kShift` contains the
// half for rounding. It also moves the rounding edge up by `kReach` units, so sums within
// `kReach` units of the edge are those whose fraction is below `2 * kReach`.
constexpr int kFractionBits = 13;
constexpr float kUnit = 1.0F / (1 << kFractionBits);
constexpr int kReach = 2;
constexpr float kBase = 1536.0F;
constexpr float kShift = kBase + 0.5F + kReach * kUnit;
constexpr std::int32_t kFractionMask = (1 << kFractionBits) - 1;
constexpr std::int32_t kUndecidedMask = kFractionMask & ~(2 * kReach - 1);

// The largest distance between the fast and the defined sum. Every term is rounded in its
// weight, its product and at most `kBlurRadius` additions, by at most 2^-24 of the sum
// each. The defined sum is rounded in every product and addition, in double. Narrowing it
// and adding the half in float move it by at most 2^-17 each.
constexpr double kFastRoundings = kBlurRadius + 2.01;
constexpr double kDefinedRoundings = 2.01 * kUnsharpSize;
constexpr double kSumError =
    255.0 * kFastRoundings / (1 << 24) + 255.0 * kDefinedRoundings / (1LL << 53) + 2.0 / (1 << 17);
// Adding `kShift` rounds to `kUnit`, an error of half a unit at most; `kReach` allows for it.
static_assert(kSumError < (kReach - 0.5) * static_cast<double>(kUnit),
              "all sums that may round the other way are computed again");

double definedSum(const float* const* rows, const BlurWeights& weights, int x) {
  double sum = 0.0;
  for (std::size_t k = 0; k < weights.exact.size(); ++k) {
    sum = sum + static_cast<double>(rows[k][x]) * weights.exact[k];
  }
  return sum;
}

float definedLevel(const float* const* rows, const BlurWeights& weights, int x) {
  const int level = my_round(static_cast<float>(definedSum(rows, weights, x)));
  return static_cast<float>(level & 255);
}

using VectorWeights = std::array<F32x4, kBlurRadius + 1>;

// Adds the two inputs with the same weight first: they are whole numbers, so that is exact.
inline __attribute__((always_inline)) F32x4 fastSum(const float* const* rows,
                                                    const VectorWeights& weights, int x) {
  F32x4 sum = (load<F32x4>(rows[0] + x) + load<F32x4>(rows[kUnsharpSize - 1] + x)) * weights[0];
  for (std::size_t k = 1; k < kBlurRadius; ++k) {
    sum =
        sum + (load<F32x4>(rows[k] + x) + load<F32x4>(rows[kUnsharpSize - 1 - k] + x)) * weights[k];
  }
  return sum + load<F32x4>(rows[kBlurRadius] + x) * weights[kBlurRadius];
}
static_assert(kBlurRadius > 0, "there is an outermost pair of taps");

// Stores four levels and returns the mask of those that must be computed again in double.
inline __attribute__((always_inline)) I32x4 blurFour(const float* const* rows,
                                                     const VectorWeights& weights, float* out,
                                                     int x) {
  const I32x4 bits = asInts(fastSum(rows, weights, x) + splat(kShift));
  store(out + x, asFloats(bits & splat(~kFractionMask)) - splat(kBase));
  return (bits & splat(kUndecidedMask)) == splat(0);
}

void computeUndecided(const float* const* rows, const BlurWeights& weights, float* out, int x,
                      I32x4 undecided) {
  for (int lane = 0; lane < 4; ++lane) {
    if (undecided[lane] != 0) out[x + lane] = definedLevel(rows, weights, x + lane);
  }
}

}  // namespace

BlurWeights blurWeights(const double* kernel) {
  BlurWeights weights{};
  for (std::size_t k = 0; k < weights.exact.size(); ++k) weights.exact[k] = kernel[k];
  for (std::size_t k = 0; k < weights.rounded.size(); ++k) {
    weights.rounded[k] = static_cast<float>(kernel[k]);
  }
  return weights;
}

void blur(const float* const* rows, const BlurWeights& weights, float* out, int from, int to) {
  VectorWeights vectors;
  for (std::size_t k = 0; k < vectors.size(); ++k) vectors[k] = splat(weights.rounded[k]);
  for (int x = from; x < to; x += 16) {
    const I32x4 a = blurFour(rows, vectors, out, x);
    const I32x4 b = blurFour(rows, vectors, out, x + 4);
    const I32x4 c = blurFour(rows, vectors, out, x + 8);
    const I32x4 d = blurFour(rows, vectors, out, x + 12);
    if (!any(a | b | c | d)) continue;
    computeUndecided(rows, weights, out, x, a);
    computeUndecided(rows, weights, out, x + 4, b);
    computeUndecided(rows, weights, out, x + 8, c);
    computeUndecided(rows, weights, out, x + 12, d);
  }
}

}  // namespace wren::stencil
