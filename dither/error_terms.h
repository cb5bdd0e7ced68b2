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

/// Whether the fixed-point products of a method equal the truncated quotients for every
/// error that can occur.
constexpr bool hasExactErrorTerms(const Method& method) {
  if (method.kind != MethodKind::kErrorDiffusion) return true;
  const int divisor = method.diffusion->divisor;
  const DiffusionTaps taps = tapsOf(*method.diffusion);
  for (std::size_t tap = 0; tap < taps.count; ++tap) {
    const int weight = taps.tap[tap].weight;
    for (int error = 0; error <= kMaxError; ++error) {
      if (errorTerm(error, errorFactor(weight, divisor)) != error * weight / divisor) return false;
    }
  }
  return true;
}

static_assert(std::all_of(kMethods.begin(), kMethods.end(), hasExactErrorTerms));

}  // namespace wren::dither
