// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The last step of the unsharp mask: the weighted difference between a row and its
// blur, clamped to grey levels.

#pragma once

#include <cstdint>

namespace wren::stencil {

/// out[x] = `kLevelGain * levels[x] - kBlurGain * blurred[x]`, clamped to 0..255, for
/// from <= x < to. The inputs are whole levels from 0 to 255, in sixteenths
/// (`kLevelFractionBits`), so no step rounds.
///
/// Precondition: `to - from` is a multiple of 16.
void sharpen(const std::int16_t* levels, const std::int16_t* blurred, std::uint8_t* out, int from,
             int to);

}  // namespace wren::stencil
