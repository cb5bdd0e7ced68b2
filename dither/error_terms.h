// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The shares of an error: error * weight / divisor, truncated toward zero,
// without a division. Several taps of a kernel have the same weight, and then
// the same share serves them all.

#ifndef WREN_BITMAP_DIFFUSION_SHARES_H_
#define WREN_BITMAP_DIFFUSION_SHARES_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "dither/methods.h"

/// A level is held as level - 128 in a signed byte. White, the threshold's upper
/// side, is then everything above 0, and clamping to 0..255 is what a saturating
/// signed addition does.
inline constexpr int kLevelOffset = 128;

/// The largest absolute error: a black pixel of level 128. A white one has at
/// most 126.
inline constexpr int kMaxError = 128;

/// weight / divisor as a fraction of 32768, rounded up.
constexpr std::int16_t shareFactor(int weight, int divisor) {
  return static_cast<std::int16_t>((32768 * weight + divisor - 1) / divisor);
}

/// error * weight / divisor for an absolute error.
constexpr int shareOf(int absoluteError, std::int16_t factor) {
  return absoluteError * factor >> 15;
}

/// The different weights of a kernel, in the order of their first tap.
struct DiffusionShares {
  std::size_t count = 0;
  std::array<std::int16_t, 12> factors = {};
  std::array<std::size_t, 12> ofTap = {};  // which factor a tap uses
};

constexpr DiffusionShares sharesOf(const DiffusionKernel& kernel) {
  DiffusionShares shares;
  for (std::size_t tap = 0; tap < kernel.tapCount; ++tap) {
    const std::int16_t factor = shareFactor(kernel.taps[tap].weight, kernel.divisor);
    std::size_t i = 0;
    while (i < shares.count && shares.factors[i] != factor) ++i;
    if (i == shares.count) shares.factors[shares.count++] = factor;
    shares.ofTap[tap] = i;
  }
  return shares;
}

/// Whether the rounded fractions of a kernel give the truncated quotient of
/// every error that can occur.
constexpr bool hasExactShares(const DiffusionKernel& kernel) {
  for (std::size_t tap = 0; tap < kernel.tapCount; ++tap) {
    const int weight = kernel.taps[tap].weight;
    const std::int16_t factor = shareFactor(weight, kernel.divisor);
    for (int error = 0; error <= kMaxError; ++error) {
      if (shareOf(error, factor) != error * weight / kernel.divisor) return false;
    }
  }
  return true;
}

static_assert(hasExactShares(kBurkes));
static_assert(hasExactShares(kStucki));
static_assert(hasExactShares(kJarvisJudiceNinke));
static_assert(hasExactShares(kSierra));
static_assert(hasExactShares(kStevensonArce));
static_assert(hasExactShares(kFloydSteinberg));

#endif  // WREN_BITMAP_DIFFUSION_SHARES_H_
