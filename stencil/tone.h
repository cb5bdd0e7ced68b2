// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stages of the stencil halftone that look at single pixels: colour to grey, the
// threshold of the page, and the tone curve. Not used by jobs, which run `stencilPage`; kept
// for their API and their tests.

#pragma once

#include "stencil/qv_image.h"

/// A new grey image of the same size. Grey bytes are copied; colours are weighted
/// in single precision and rounded. The order of the colours comes from `colorType`,
/// the step from pixel to pixel from `channels`; alpha is ignored.
QVImage cvtGray(const QVImage& source);

/// `momentThreshold` of the first width * height bytes.
///
/// Precondition: at most 2^31 - 1 pixels.
int thresh_global_moments(const QVImage& grey);

/// Applies `piecewiseGamma` to the first width * height bytes, in place.
void enh_piecewise_gamma(QVImage& grey, int knee, float gammaLow, float gammaHigh);
