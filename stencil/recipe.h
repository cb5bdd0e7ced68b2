// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Every number that decides how the stencil halftone looks, and what the fast code
// derives from them. No other file repeats one of them: a change here changes the
// printed page, or fails a `static_assert` where a kernel relies on the value.

#pragma once

#include <bit>
#include <cstdint>

namespace wren::stencil {

// Grey conversion.

/// Weights of red, green and blue in a grey level.
inline constexpr float kRedWeight = 0.299F;
inline constexpr float kGreenWeight = 0.587F;
inline constexpr float kBlueWeight = 0.114F;

// Threshold.

/// The threshold of a page whose moments have no finite real solution.
inline constexpr int kFallbackThreshold = 128;

// Tone curve: two power segments that meet at the knee.

inline constexpr int kKnee = 64;  ///< first grey level of the upper segment
inline constexpr float kGammaBelowKnee = 0.85F;
inline constexpr float kGammaAboveKnee = 0.7F;

static_assert(0 < kKnee && kKnee < 255, "each segment has at least two levels");
static_assert(kGammaBelowKnee > 0.0F && kGammaAboveKnee > 0.0F, "the curve rises");

// Unsharp mask.

inline constexpr float kUnsharpAmountPercent = 300.0F;
inline constexpr float kPercent = 100.0F;     ///< divides an amount into a weight
inline constexpr int kUnsharpSize = 11;       ///< taps of the Gaussian in each direction
inline constexpr double kUnsharpSigma = 3.0;  ///< of the Gaussian, in pixels

static_assert(kUnsharpSize > 0 && kUnsharpSize % 2 == 1, "the Gaussian has a middle tap");
static_assert(kUnsharpSigma > 0.0);

/// Pixels that the blur reads on each side.
inline constexpr int kBlurRadius = kUnsharpSize / 2;

/// A sharpened level is `kLevelGain * level - kBlurGain * blurred level`, clamped.
inline constexpr float kBlurGain = kUnsharpAmountPercent / kPercent;
inline constexpr float kLevelGain = 1.0F + kBlurGain;

static_assert(kBlurGain == static_cast<float>(static_cast<int>(kBlurGain)),
              "sharpened levels are whole numbers and need no rounding");
static_assert(kBlurGain >= 0.0F && kLevelGain * 255.0F <= 32767.0F,
              "sharpened levels fit in 16 bits before they are clamped");

// Error diffusion.

/// One target of a pixel's error, relative to the pixel, and its weight.
struct DiffusionTap {
  int dx;
  int dy;
  float weight;
};

/// The weights add up to 0.940002 and two are negative: the look of the stencil
/// depends on both.
inline constexpr DiffusionTap kDiffusionTaps[] = {
    {+1, 0, 0.505786F},   //
    {+2, 0, -0.052926F},  //
    {-2, 1, 0.226194F},   //
    {-1, 1, 0.128835F},   //
    {0, 1, 0.243191F},    //
    {+1, 1, -0.111078F},  //
};

/// The weight of the tap at (dx, dy). It does not compile if there is no such tap.
consteval float diffusionWeight(int dx, int dy) {
  for (const DiffusionTap& tap : kDiffusionTaps) {
    if (tap.dx == dx && tap.dy == dy) return tap.weight;
  }
  throw "no such tap";
}

/// Columns by which a row has to follow the row above: from then on no tap of that
/// row reaches its next pixel.
consteval int diffusionLag() {
  int lag = 1;
  for (const DiffusionTap& tap : kDiffusionTaps) {
    if (tap.dy > 0 && 1 - tap.dx > lag) lag = 1 - tap.dx;
  }
  return lag;
}
inline constexpr int kDiffusionLag = diffusionLag();

/// The grey level of white, which a pixel that becomes white has used up.
inline constexpr float kWhite = 255.0F;

/// The fraction of `kWhite` that is not charged, for each black neighbour to the left
/// and above.
inline constexpr float kNeighbourStep = 0.1427F;

/// Level of a white pixel with 0, 1 or 2 black neighbours.
inline constexpr float kWhiteLevels[] = {
    kWhite,
    kWhite*(1.0F - kNeighbourStep),
    kWhite*(1.0F - (kNeighbourStep + kNeighbourStep)),
};

/// The same levels as bit patterns. They are equally spaced, so each black neighbour
/// subtracts one integer constant.
inline constexpr std::int32_t kWhiteBits = std::bit_cast<std::int32_t>(kWhiteLevels[0]);
inline constexpr std::int32_t kNeighbourCorrection =
    kWhiteBits - std::bit_cast<std::int32_t>(kWhiteLevels[1]);

static_assert(kWhiteBits - 2 * kNeighbourCorrection == std::bit_cast<std::int32_t>(kWhiteLevels[2]),
              "the neighbour correction is one integer per black neighbour");

}  // namespace wren::stencil
