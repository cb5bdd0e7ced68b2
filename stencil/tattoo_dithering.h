// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil halftone as a whole: grey, threshold, tone curve, unsharp mask and
// error diffusion with fixed parameters.

#pragma once

#include "stencil/qv_image.h"
#include "stencil/tone.h"

inline constexpr int kStencilKnee = 64;
inline constexpr float kStencilGammaLow = 0.85F;
inline constexpr float kStencilGammaHigh = 0.7F;
inline constexpr float kStencilUnsharpAmount = 300.0F;  ///< percent
inline constexpr int kStencilUnsharpSize = 11;          ///< taps in each direction

/// The tone curve with these parameters.
const GreyTable& stencil_tone_table();

/// Turns a page of any layout into a new QV_IMG_GRAY image of the same size that
/// holds only 0 and 255. `source` is only read.
QVImage qvTattooDithering(QVImage& source);
