// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The halftone of the stencil: an error diffusion with its own six-tap kernel, a
// global threshold instead of the mid-grey, and a correction for the neighbours
// that are already decided.

#pragma once

#include "stencil/qv_image.h"

/// Where the error of the pixel at (x, y) goes, in the order of the additions.
struct StencilTap {
  int dx;
  int dy;
  float weight;
};

/// The weights are not normalised (they add up to 0.940002) and two are negative:
/// the look of the stencil depends on it.
inline constexpr StencilTap kDiffusionTaps[] = {
    {+1, 0, 0.505786F},   //
    {+2, 0, -0.052926F},  //
    {-2, 1, 0.226194F},   //
    {-1, 1, 0.128835F},   //
    {0, 1, 0.243191F},    //
    {+1, 1, -0.111078F},  //
};

/// How much less white counts for each black pixel to the left and above.
inline constexpr float kNeighbourStep = 0.1427F;
inline constexpr float kWhite = 255.0F;

/// Binarises a grey image: a new QV_IMG_GRAY image of the same size that holds only
/// 0 and 255. A pixel with its share of errors becomes 255 when it is strictly
/// above `threshold`. Errors are single precision and never clamped. Rows run
/// from left to right, and errors beyond the edges are dropped.
QVImage edf_cus(const QVImage& image, int threshold);
