// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tattoo_dithering.h"

#include "stencil/stencil_page.h"

const GreyTable& stencil_tone_table() {
  static const GreyTable table =
      piecewise_gamma_table(kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
  return table;
}

namespace {

// One function for each variable that is returned: images have no moves, and only
// so is each built directly in the caller's object instead of copied there.
QVImage dots_of_grey(const QVImage& grey) {
  QVImage dots(grey.width, grey.height, QV_IMG_GRAY);
  stencil_page(grey.data, grey.width, grey.width, grey.height, dots.data, dots.width);
  return dots;
}

QVImage dots_of_colours(const QVImage& source) {
  QVImage page = cvtGray(source);
  stencil_page(page.data, page.width, page.width, page.height, page.data, page.width);
  return page;
}

}  // namespace

// The stages are those of cvtGray, thresh_global_moments, enh_piecewise_gamma,
// enh_unsharp_mask and edf_cus, streamed through a few rows.
QVImage qvTattooDithering(QVImage& source) {
  const bool isGrey = source.colorType == QV_IMG_GRAY && source.channels == 1;
  return isGrey ? dots_of_grey(source) : dots_of_colours(source);
}
