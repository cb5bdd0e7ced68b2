// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone_curve.h"

#include <cstddef>

#include "stencil/fast_math.h"
#include "stencil/recipe.h"

namespace wren::stencil {

ToneCurve piecewiseGamma(int knee, float gammaLow, float gammaHigh) {
  ToneCurve curve{};
  const auto below = static_cast<float>(knee);
  const auto above = static_cast<float>(255 - knee);
  for (int i = 0; i < 256; ++i) {
    const auto x = static_cast<float>(i);
    const float level = i < knee ? my_pow(x / below, gammaLow) * below
                                 : my_pow((x - below) / above, gammaHigh) * above + below;
    curve[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(static_cast<int>(level) & 255);
  }
  return curve;
}

const ToneCurve& stencilToneCurve() {
  static const ToneCurve kCurve = piecewiseGamma(kKnee, kGammaBelowKnee, kGammaAboveKnee);
  return kCurve;
}

}  // namespace wren::stencil
