// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error terms: error * weight / divisor, truncated toward zero, as a fixed-point product
// instead of a division. Taps of equal weight have the same factor and share one error
// term.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "dither/methods.h"

namespace wren::dither {

/// Levels are held as level - 128 in a signed byte. White, the upper side of the threshold,
/// is then everything above 0, and clamping to 0..255 is a saturating addition.
inline constexpr int kLevelOffset = 128;

/// The largest absolute error: a black pixel of level 128. A white one has at most 126.
inline constexpr int kMaxError = 128;

/// weight / divisor in Q15 (a fraction of 32768), rounded up.
constexpr std::int16_t errorFactor(int weight, int divisor) {
  return static_cast<std::int16_t>((32768 * weight + divisor - 1) / divisor);
}

/// Error term of an absolute error up to `kMaxError`.
constexpr int errorTerm(int absoluteError, std::int16_t factor) {
  return absoluteError * factor >> 15;
}

/// The distinct factors of a kernel, in the order of their first tap.
struct ErrorFactors {
  std::size_t count = 0;
  std::array<std::int16_t, kMaxTaps> factor = {};
  std::array<std::size_t, kMaxTaps> indexOfTap = {};  ///< Which factor a tap uses.
};

constexpr ErrorFactors errorFactorsOf(const DiffusionKernel& kernel) {
  const DiffusionTaps taps = tapsOf(kernel);
  ErrorFactors factors;
  for (std::size_t tap = 0; tap < taps.count; ++tap) {
    const std::int16_t factor = errorFactor(taps.tap[tap].weight, kernel.divisor);
    std::size_t i = 0;
    while (i < factors.count && factors.factor[i] != factor) ++i;
    if (i == factors.count) factors.factor[factors.count++] = factor;
    factors.indexOfTap[tap] = i;
  }
  return factors;
}

/// How a vector kernel gets the error terms of one factor: an unsigned byte has a fast shift,
/// but no product.
struct TermStep {
  bool isShift = false;
  bool ofError = false;  ///< Shifts the absolute error, else an earlier term.
  std::size_t term = 0;  ///< Which earlier term is shifted.
  int shift = 0;         ///< Bits to the right.
};

/// One step for each factor of `errorFactorsOf`.
using TermSteps = std::array<TermStep, kMaxTaps>;

/// The base-2 logarithm of large / small if that is a power of two, else -1.
constexpr int powerOfTwoRatio(int large, int small) {
  for (int shift = 0; shift < 8; ++shift) {
    if (small << shift == large) return shift;
  }
  return -1;
}

/// A term is a shift where its weight is the divisor, or the weight of an earlier term, over
/// a power of two: truncating twice equals truncating once.
constexpr TermSteps termStepsOf(const DiffusionKernel& kernel) {
  const DiffusionTaps taps = tapsOf(kernel);
  const ErrorFactors factors = errorFactorsOf(kernel);
  std::array<int, kMaxTaps> weights = {};
  TermSteps steps;
  for (std::size_t tap = taps.count; tap-- > 0;) {
    weights[factors.indexOfTap[tap]] = taps.tap[tap].weight;
  }
  for (std::size_t i = 0; i < factors.count; ++i) {
    const int ofError = powerOfTwoRatio(kernel.divisor, weights[i]);
    if (ofError >= 0) steps[i] = {true, true, 0, ofError};
    for (std::size_t from = 0; from < i && !steps[i].isShift; ++from) {
      const int ofTerm = powerOfTwoRatio(weights[from], weights[i]);
      if (ofTerm >= 0) steps[i] = {true, false, from, ofTerm};
    }
  }
  return steps;
}

/// Error term `i` of an absolute error, by its step.
constexpr int steppedTerm(const ErrorFactors& factors, const TermSteps& steps, std::size_t i,
                          int absoluteError) {
  if (!steps[i].isShift) return errorTerm(absoluteError, factors.factor[i]);
  if (steps[i].ofError) return absoluteError >> steps[i].shift;
  return steppedTerm(factors, steps, steps[i].term, absoluteError) >> steps[i].shift;
}

/// Whether the fixed-point products and the shifts of a method equal the truncated quotients
/// for every error that can occur.
constexpr bool hasExactErrorTerms(const Method& method) {
  if (method.kind != MethodKind::kErrorDiffusion) return true;
  const int divisor = method.diffusion->divisor;
  const DiffusionTaps taps = tapsOf(*method.diffusion);
  const ErrorFactors factors = errorFactorsOf(*method.diffusion);
  const TermSteps steps = termStepsOf(*method.diffusion);
  for (std::size_t tap = 0; tap < taps.count; ++tap) {
    const int weight = taps.tap[tap].weight;
    for (int error = 0; error <= kMaxError; ++error) {
      if (errorTerm(error, errorFactor(weight, divisor)) != error * weight / divisor) return false;
      if (steppedTerm(factors, steps, factors.indexOfTap[tap], error) != error * weight / divisor) {
        return false;
      }
    }
  }
  return true;
}

static_assert(std::all_of(kMethods.begin(), kMethods.end(), hasExactErrorTerms));

}  // namespace wren::dither
