// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tattoo_dithering.h"

#include "stencil/error_diffusion.h"
#include "stencil/tone.h"
#include "stencil/unsharp.h"

QVImage qvTattooDithering(QVImage& source) {
  QVImage grey = cvtGray(source);
  // Taken before the tone curve, and used on the page after it.
  const int threshold = thresh_global_moments(grey);
  enh_piecewise_gamma(grey, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  const QVImage sharp = enh_unsharp_mask(grey, kStencilUnsharpAmount, kStencilUnsharpSize);
  return edf_cus(sharp, threshold);
}
