// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The point operations that open the stencil halftone: colour to grey, one
// global threshold for the page, and a brightening curve. Nothing here looks at
// a pixel's neighbours.

#pragma once

#include <array>
#include <cstdint>

#include "stencil/qv_image.h"

/// Shares of red, green and blue in a grey value.
inline constexpr float kRedWeight = 0.299F;
inline constexpr float kGreenWeight = 0.587F;
inline constexpr float kBlueWeight = 0.114F;

/// The threshold of a page on which the moments have no real solution.
inline constexpr int kFallbackThreshold = 128;

/// How many pixels have each grey level.
using GreyCounts = std::array<std::int32_t, 256>;

/// What each grey level becomes.
using GreyTable = std::array<std::uint8_t, 256>;

/// A new grey image of the same size. Grey bytes are copied; colours are weighted
/// in single precision and rounded. The order of the colours follows `colorType`,
/// the step from pixel to pixel `channels`; alpha is ignored.
QVImage cvtGray(const QVImage& source);

/// Counts the levels of the first width * height bytes.
GreyCounts count_levels(const QVImage& grey);

/// The threshold of a page by preserving the first three moments of its grey
/// levels (W. H. Tsai, "Moment-preserving thresholding", 1985): 0 to 255, -1 when
/// no level qualifies, or kFallbackThreshold when there is no finite solution.
///
/// Precondition: no more than 2^31 - 1 pixels.
int thresh_global_moments(const QVImage& grey);

/// The same from the counts alone: `counts` are not negative and add up to at
/// most 2^31 - 1.
int threshold_of_counts(const GreyCounts& counts);

/// The table of a power curve in two segments that meet at `knee`: levels 0 to
/// knee - 1 follow the power `gammaLow`, knee to 255 the power `gammaHigh`.
///
/// Precondition: the results fit in an int; they do for knees from 0 to 255 and
/// gammas above 0.
GreyTable piecewise_gamma_table(int knee, float gammaLow, float gammaHigh);

/// Sends the first width * height bytes of an image through that table, in place.
void enh_piecewise_gamma(QVImage& grey, int knee, float gammaLow, float gammaHigh);
