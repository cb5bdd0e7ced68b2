// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The tone curve of the stencil halftone as a lookup table: a power curve in two
// segments that brightens the mid-tones.

#pragma once

#include <array>
#include <cstdint>

namespace wren::stencil {

/// The new level of each grey level.
using ToneCurve = std::array<std::uint8_t, 256>;

/// Levels 0 to `knee - 1` follow the power `gammaLow`, levels `knee` to 255 the power
/// `gammaHigh`. Results are truncated to an int and stored as their low byte.
///
/// Precondition: the results fit in an int. They do for knees from 0 to 255 and
/// gammas above 0.
ToneCurve piecewiseGamma(int knee, float gammaLow, float gammaHigh);

/// The curve of the recipe. It is computed once; safe to call from several threads.
const ToneCurve& stencilToneCurve();

}  // namespace wren::stencil
