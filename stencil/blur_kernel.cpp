// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/blur_kernel.h"

#include <algorithm>
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

struct VectorWeights {
  WordVector upper[kPairs];  // alternately those of the two taps
  WordVector lower[kBlurRadius + 1];
};

HWY_INLINE WordVector alternately(std::int16_t even, std::int16_t odd) {
  return hn::InterleaveLower(kWords, hn::Set(kWords, even), hn::Set(kWords, odd));
}

// The sums of a vector of pixels, in the order of `InterleaveLower` and `InterleaveUpper`.
struct PixelSums {
  SumVector low;
  SumVector low2;  // part of `low` where products are not added in pairs
  SumVector high;
  SumVector high2;

  // Adds a * weight + b * weight.
  HWY_INLINE void add(WordVector a, WordVector b, WordVector weights) {
    low =
        hn::ReorderWidenMulAccumulate(kSums, hn::InterleaveLower(kWords, a, b), weights, low, low2);
    high = hn::ReorderWidenMulAccumulate(kSums, hn::InterleaveUpper(kWords, a, b), weights, high,
                                         high2);
  }
};

// The inputs of tap `k` and of the tap with the same weight.
HWY_INLINE WordVector tapInputs(const std::int16_t* const* rows, std::size_t k, int x) {
  const WordVector first = hn::LoadU(kWords, rows[k] + x);
  return k == kBlurRadius ? first
                          : hn::Add(first, hn::LoadU(kWords, rows[kUnsharpSize - 1 - k] + x));
}

HWY_INLINE PixelSums fastSums(const std::int16_t* const* rows, const VectorWeights& weights,
                              WordVector shiftWeights, int x) {
  const SumVector zero = hn::Zero(kSums);
  PixelSums sums = {zero, zero, zero, zero};
  WordVector rest = hn::Zero(kWords);
  for (std::size_t i = 0; i < kPairs; ++i) {
    const WordVector a = tapInputs(rows, 2 * i, x);
    const WordVector b = tapInputs(rows, 2 * i + 1, x);
    sums.add(a, b, weights.upper[i]);
    rest = hn::Add(rest, hn::MulHigh(a, weights.lower[2 * i]));
    rest = hn::Add(rest, hn::MulHigh(b, weights.lower[2 * i + 1]));
  }
  sums.add(rest, hn::Set(kWords, kShiftFactor), shiftWeights);
  sums.low = hn::RearrangeToOddPlusEven(sums.low, sums.low2);
  sums.high = hn::RearrangeToOddPlusEven(sums.high, sums.high2);
  return sums;
}

HWY_INLINE auto isUndecided(SumVector sums) {
  return hn::Eq(hn::And(sums, hn::Set(kSums, kUndecidedMask)), hn::Zero(kSums));
}

HWY_INLINE SumVector levelsOf(SumVector sums) {
  return hn::ShiftLeft<kLevelFractionBits>(hn::ShiftRight<kSumBits>(sums));
}

}  // namespace

void blurVectors(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out,
                 int from, int to) {
  VectorWeights vectors;
  for (std::size_t i = 0; i < kPairs; ++i) {
    vectors.upper[i] = alternately(weights.upper[2 * i], weights.upper[2 * i + 1]);
  }
  for (std::size_t k = 0; k <= kBlurRadius; ++k) {
    vectors.lower[k] = hn::Set(kWords, weights.lower[k]);
  }
  const WordVector shiftWeights = alternately(1, kShiftWeight);
  for (int x = from; x < to; x += static_cast<int>(kLanes)) {
    const PixelSums sums = fastSums(rows, vectors, shiftWeights, x);
    hn::StoreU(hn::ReorderDemote2To(kWords, levelsOf(sums.low), levelsOf(sums.high)), kWords,
               out + x);
    const auto low = isUndecided(sums.low);
    const auto high = isUndecided(sums.high);
    if (HWY_LIKELY(hn::AllFalse(kSums, hn::Or(low, high)))) continue;
    std::int16_t undecided[kLanes];
    hn::StoreU(
        hn::ReorderDemote2To(kWords, hn::VecFromMask(kSums, low), hn::VecFromMask(kSums, high)),
        kWords, undecided);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const int column = x + static_cast<int>(lane);
      if (undecided[lane] != 0) out[column] = definedLevel(rows, weights, column);
    }
  }
}

}  // namespace wren::stencil::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::stencil {
namespace {

void blurScalar(const std::int16_t* const* rows, const BlurWeights& weights, std::int16_t* out,
                int from, int to) {
  for (int x = from; x < to; ++x) out[x] = definedLevel(rows, weights, x);
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
