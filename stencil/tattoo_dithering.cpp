// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tattoo_dithering.h"

#include "stencil/stencil_page.h"

const GreyTable& stencil_tone_table() {
  static const GreyTable table =
      piecewise_gamma_table(kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  return table;
}

// The stages are those of cvtGray, thresh_global_moments, enh_piecewise_gamma,
// enh_unsharp_mask and edf_cus, streamed through a few rows.
QVImage qvTattooDithering(QVImage& source) {
  if (source.colorType == QV_IMG_GRAY && source.channels == 1) {
    QVImage result(source.width, source.height, QV_IMG_GRAY);
    stencil_page(source.data, source.width, source.width, source.height, result.data, result.width);
    return result;
  }
  QVImage grey = cvtGray(source);
  stencil_page(grey.data, grey.width, grey.width, grey.height, grey.data, grey.width);
  return grey;
}
