// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "common/vector_level.h"
#include "common/vector_targets.h"
#include "stencil/fast_math.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stencil/blur_kernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef WREN_STENCIL_BLUR_KERNEL
#define WREN_STENCIL_BLUR_KERNEL

namespace wren::stencil {

// Fixed-point sums have this many bits of fraction.
inline constexpr int kSumBits = BlurWeights::kWeightBits + kLevelFractionBits;
inline constexpr std::int32_t kSumUnit = std::int32_t{1} << kSumBits;

// `kReach` moves the rounding edge up, so sums within `kReach` units of the edge are those
// whose fraction is below `2 * kReach`.
inline constexpr std::int32_t kReach = 64;
inline constexpr std::int32_t kUndecidedMask = (kSumUnit - 1) & ~(2 * kReach - 1);
static_assert((kReach & (kReach - 1)) == 0);

// One half for rounding and the reach, as a product of two 16-bit numbers.
inline constexpr std::int16_t kShiftFactor = kReach;
inline constexpr std::int16_t kShiftWeight = kSumUnit / 2 / kReach + 1;

// The largest distance between the fixed-point and the defined sum, in units: the lower
// weights are rounded or clamped by at most one unit each, and their products are rounded
// down. The defined sum is rounded in every product and addition, in double. Narrowing it and
// adding the half in float move it by at most 2^-17 each.
inline constexpr double kFastError =
    kUnsharpSize * (255.0 * (1 << kLevelFractionBits)) / (1 << 16) + (kBlurRadius + 1);
inline constexpr double kDefinedError =
    (255.0 * 2.01 * kUnsharpSize / (1LL << 53) + 2.0 / (1 << 17)) * kSumUnit;
static_assert(kFastError + kDefinedError < kReach,
              "all sums that may round the other way are computed again");

static_assert(256LL * kSumUnit <= 1LL << 31, "sums fit in 32 bits");
static_assert(kUnsharpSize * (255 << kLevelFractionBits) / 2 + kUnsharpSize <= 32767,
              "sums of the products with lower weights fit in 16 bits");

inline std::int16_t definedLevel(const std::int16_t* const* rows, const BlurWeights& weights,
                                 int x) {
  double sum = 0.0;
  for (std::size_t k = 0; k < weights.exact.size(); ++k) {
    sum = sum + static_cast<double>(rows[k][x] >> kLevelFractionBits) * weights.exact[k];
  }
  const int level = my_round(static_cast<float>(sum)) & 255;
  return static_cast<std::int16_t>(level << kLevelFractionBits);
}

}  // namespace wren::stencil

#endif  // WREN_STENCIL_BLUR_KERNEL

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::stencil::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<std::int16_t>;
using Sums = hn::RepartitionToWide<Words>;
using WordVector = hn::Vec<Words>;
using SumVector = hn::Vec<Sums>;

constexpr Words kWords;
constexpr Sums kSums;
constexpr std::size_t kLanes = hn::MaxLanes(kWords);

constexpr std::size_t kPairs = kBlurRadius / 2 + 1;  // of taps with different weights
static_assert(kBlurRadius % 2 == 1, "the middle tap makes the number of weights even");

HWY_INLINE WordVector alternately(std::int16_t even, std::int16_t odd) {
  return hn::InterleaveLower(kWords, hn::Set(kWords, even), hn::Set(kWords, odd));
}

struct VectorWeights {
  HWY_INLINE explicit VectorWeights(const BlurWeights& weights)
      : shift(alternately(1, kShiftWeight)) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      upper[i] = alternately(weights.upper[2 * i], weights.upper[2 * i + 1]);
    }
    for (std::size_t k = 0; k <= kBlurRadius; ++k) lower[k] = hn::Set(kWords, weights.lower[k]);
  }

  WordVector upper[kPairs];  // alternately those of the two taps
  WordVector lower[kBlurRadius + 1];
  WordVector shift;
};

// The sums of a vector of pixels, in the order of `InterleaveLower` and `InterleaveUpper`.
struct PixelSums {
  PixelSums() = default;

  // a * weight + b * weight.
  HWY_INLINE PixelSums(WordVector a, WordVector b, WordVector weights)
      : low(hn::Zero(kSums)), low2(low), high(low), high2(low) {
    add(a, b, weights);
  }

  HWY_INLINE void add(WordVector a, WordVector b, WordVector weights) {
    low =
        hn::ReorderWidenMulAccumulate(kSums, hn::InterleaveLower(kWords, a, b), weights, low, low2);
    high = hn::ReorderWidenMulAccumulate(kSums, hn::InterleaveUpper(kWords, a, b), weights, high,
                                         high2);
  }

  // The whole sums in `low` and `high`.
  HWY_INLINE PixelSums ordered() const {
    PixelSums sums;
    sums.low = hn::RearrangeToOddPlusEven(low, low2);
    sums.high = hn::RearrangeToOddPlusEven(high, high2);
    return sums;
  }

  SumVector low;
  SumVector low2;  // products of odd lanes where the machine does not add them in pairs
  SumVector high;
  SumVector high2;
};

using TapRows = std::array<const std::int16_t*, kUnsharpSize>;

// The inputs of tap `k` and of the tap with the same weight.
HWY_INLINE WordVector tapInputs(const TapRows& rows, std::size_t k, int x) {
  const WordVector first = hn::LoadU(kWords, rows[k] + x);
  return k == kBlurRadius ? first
                          : hn::Add(first, hn::LoadU(kWords, rows[kUnsharpSize - 1 - k] + x));
}

HWY_INLINE WordVector lowerProducts(WordVector a, WordVector b, const WordVector* weights) {
  return hn::Add(hn::MulHigh(a, weights[0]), hn::MulHigh(b, weights[1]));
}

HWY_INLINE PixelSums fastSums(const TapRows& rows, const VectorWeights& weights, int x) {
  WordVector a = tapInputs(rows, 0, x);
  WordVector b = tapInputs(rows, 1, x);
  PixelSums sums(a, b, weights.upper[0]);
  WordVector rest = lowerProducts(a, b, weights.lower);
#pragma GCC unroll 8
  for (std::size_t i = 1; i < kPairs; ++i) {
    a = tapInputs(rows, 2 * i, x);
    b = tapInputs(rows, 2 * i + 1, x);
    sums.add(a, b, weights.upper[i]);
    rest = hn::Add(rest, lowerProducts(a, b, weights.lower + 2 * i));
  }
  sums.add(rest, hn::Set(kWords, kShiftFactor), weights.shift);
  return sums.ordered();
}

HWY_INLINE auto isUndecided(SumVector sums) {
  return hn::Eq(hn::And(sums, hn::Set(kSums, kUndecidedMask)), hn::Zero(kSums));
}

// Stores the levels of a vector of pixels.
HWY_INLINE void storeLevels(const PixelSums& sums, std::int16_t* out) {
  constexpr int kDropped = BlurWeights::kWeightBits;  // sixteenths are left
  const WordVector levels = hn::ReorderDemote2To(kWords, hn::ShiftRight<kDropped>(sums.low),
                                                 hn::ShiftRight<kDropped>(sums.high));
  hn::StoreU(hn::And(levels, hn::Set(kWords, -(1 << kLevelFractionBits))), kWords, out);
}

// Computes the undecided pixels of a vector again.
HWY_NOINLINE void decide(const std::int16_t* const* rows, const BlurWeights& weights,
                         const PixelSums& sums, std::int16_t* out, int x) {
  std::int16_t undecided[kLanes];
  hn::StoreU(hn::ReorderDemote2To(kWords, hn::VecFromMask(kSums, isUndecided(sums.low)),
                                  hn::VecFromMask(kSums, isUndecided(sums.high))),
             kWords, undecided);
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    const int column = x + static_cast<int>(lane);
    if (undecided[lane] != 0) out[column] = definedLevel(rows, weights, column);
  }
}

// Two vectors at once share the test and the addresses.
template <int Vectors>
HWY_INLINE void blurVectorsAt(const std::int16_t* const* rows, const TapRows& taps,
                              const BlurWeights& weights, const VectorWeights& vectors,
                              std::int16_t* out, int x) {
  constexpr int kStep = static_cast<int>(kLanes);
  PixelSums sums[Vectors];
#pragma GCC unroll 8
  for (int i = 0; i < Vectors; ++i) sums[i] = fastSums(taps, vectors, x + i * kStep);
  auto undecided = hn::Or(isUndecided(sums[0].low), isUndecided(sums[0].high));
#pragma GCC unroll 8
  for (int i = 1; i < Vectors; ++i) {
    undecided = hn::Or(undecided, hn::Or(isUndecided(sums[i].low), isUndecided(sums[i].high)));
  }
#pragma GCC unroll 8
  for (int i = 0; i < Vectors; ++i) storeLevels(sums[i], out + x + i * kStep);
  if (HWY_LIKELY(hn::AllFalse(kSums, undecided))) return;
  for (int i = 0; i < Vectors; ++i) decide(rows, weights, sums[i], out, x + i * kStep);
}

}  // namespace

void blurVectors(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out,
                 int from, int to) {
  const VectorWeights vectors(weights);
  TapRows taps;  // a copy, which no store to `out` can change
  std::copy_n(rows, taps.size(), taps.begin());
  constexpr int kStep = static_cast<int>(kLanes);
  int x = from;
  for (; x + 2 * kStep <= to; x += 2 * kStep) {
    blurVectorsAt<2>(rows, taps, weights, vectors, out, x);
  }
  if (x < to) blurVectorsAt<1>(rows, taps, weights, vectors, out, x);
}

}  // namespace wren::stencil::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::stencil {
namespace {

constexpr int kScalarPx = 64;

// Adds the inputs a + b of a tap, or a alone, to `count` sums.
HWY_NOINLINE void addTap(const std::int16_t* a, const std::int16_t* b, std::int16_t upper,
                         std::int16_t lower, std::int32_t* __restrict sums, int count) {
  for (int i = 0; i < count; ++i) {
    const auto input = static_cast<std::int16_t>(a[i] + b[i]);
    sums[i] += input * upper + static_cast<std::int16_t>((input * lower) >> 16);
  }
}

// Written for the compiler's vectoriser: most processors without a vector level of ours have
// instructions for these loops.
void blurScalar(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out,
                int from, int to) {
  constexpr std::int16_t kNone[kScalarPx] = {};
  for (int x = from; x < to; x += kScalarPx) {
    const int count = std::min(kScalarPx, to - x);
    std::int32_t sums[kScalarPx];
    std::fill_n(sums, count, kShiftFactor * kShiftWeight);
    for (std::size_t k = 0; k <= kBlurRadius; ++k) {
      const std::int16_t* other = k == kBlurRadius ? kNone : rows[kUnsharpSize - 1 - k] + x;
      addTap(rows[k] + x, other, weights.upper[k], weights.lower[k], sums, count);
    }
    for (int i = 0; i < count; ++i) {
      out[x + i] = static_cast<std::int16_t>(sums[i] >> kSumBits << kLevelFractionBits);
    }
    for (int i = 0; i < count; ++i) {
      if ((sums[i] & kUndecidedMask) == 0) out[x + i] = definedLevel(rows, weights, x + i);
    }
  }
}

constexpr KernelTable<decltype(&blurScalar)> kBlur = WREN_KERNEL_TABLE(blurScalar, blurVectors);

}  // namespace

BlurWeights blurWeights(const double* kernel) {
  BlurWeights weights{};
  for (std::size_t k = 0; k < weights.exact.size(); ++k) weights.exact[k] = kernel[k];
  for (std::size_t k = 0; k < weights.upper.size(); ++k) {
    const double scaled = kernel[k] * (1 << BlurWeights::kWeightBits);
    const int upper = static_cast<int>(scaled + 0.5);
    const double rest = (scaled - upper) * (1 << 16);
    weights.upper[k] = static_cast<std::int16_t>(upper);
    weights.lower[k] = static_cast<std::int16_t>(std::clamp(rest, -32768.0, 32767.0));
  }
  return weights;
}

void blur(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out, int from,
          int to) {
  kernelOf(kBlur)(rows, weights, out, from, to);
}

}  // namespace wren::stencil

#endif  // HWY_ONCE
