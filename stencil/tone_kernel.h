// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The tone curve on whole chunks of pixels, which also finds the chunks that have one
// level: receipts are mostly paper, and such chunks need no further work.

#pragma once

#include <cstdint>

#include "stencil/tone_curve.h"

namespace wren::stencil {

/// Pixels that are skipped together.
inline constexpr int kChunkPx = 16;

/// The level of a chunk with several levels.
inline constexpr std::int16_t kMixedChunk = -1;

/// out[x] = curve[pixels[x]] in sixteenths (`kLevelFractionBits`) for `chunks` * `kChunkPx`
/// pixels. `levels[i]` becomes the new level of chunk i, or `kMixedChunk`.
void applyToneCurve(const ToneCurve& curve, const std::uint8_t* pixels, std::int16_t* out,
                    std::int16_t* levels, int chunks);

}  // namespace wren::stencil
