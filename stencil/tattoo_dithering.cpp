// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tattoo_dithering.h"

#include "stencil/stencil_page.h"
#include "stencil/tone.h"

namespace {

using wren::stencil::stencilPage;

// Images have no moves. With one returned variable per function each is built in the
// caller's object and not copied.
QVImage dotsOfGrey(const QVImage& grey) {
  QVImage dots(grey.width, grey.height, QV_IMG_GRAY);
  stencilPage(grey.data, grey.width, grey.width, grey.height, {dots.data, dots.width});
  return dots;
}

QVImage dotsOfColours(const QVImage& source) {
  QVImage page = cvtGray(source);
  stencilPage(page.data, page.width, page.width, page.height, {page.data, page.width});
  return page;
}

}  // namespace

// `stencilPage` runs the stages of `thresh_global_moments`, `enh_piecewise_gamma`,
// `enh_unsharp_mask` and `edf_cus`, streamed.
QVImage qvTattooDithering(QVImage& source) {
  const bool isGrey = source.colorType == QV_IMG_GRAY && source.channels == 1;
  return isGrey ? dotsOfGrey(source) : dotsOfColours(source);
}
