// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/stencil_page.h"

#include <algorithm>

#include "stencil/diffusion_wavefront.h"
#include "stencil/histogram.h"
#include "stencil/moment_threshold.h"
#include "stencil/sharp_rows.h"
#include "stencil/tone_curve.h"

namespace wren::stencil {
namespace {

constexpr int kRowsPerCheck = 256;

bool countPage(const std::uint8_t* source, std::ptrdiff_t stride, int width, int height,
               const CancelCheck& cancel, HistogramBuilder& builder) {
  for (int y = 0; y < height; ++y) {
    if (y % kRowsPerCheck == 0 && cancel.isCancelled()) return false;
    builder.add(source + y * stride, width);
  }
  return true;
}

bool diffusePage(SharpRows& sharp, WavefrontDiffuser& diffuser, int height,
                 const CancelCheck& cancel) {
  for (int y = 0; y < height; y += WavefrontDiffuser::kBlockRows) {
    if (cancel.isCancelled()) return false;
    const int rows = std::min(WavefrontDiffuser::kBlockRows, height - y);
    for (int r = 0; r < rows; ++r) sharp.next(diffuser.row(r));
    diffuser.run();
  }
  return true;
}

}  // namespace

bool stencilPage(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                 const StencilDots& result, CancelCheck cancel) {
  if (width <= 0 || height <= 0) return true;
  HistogramBuilder builder;
  if (!countPage(source, sourceStride, width, height, cancel, builder)) return false;
  const int threshold = momentThreshold(builder.histogram());
  SharpRows sharp(source, sourceStride, width, height, stencilToneCurve());
  WavefrontDiffuser diffuser(width, height, threshold, result);
  return diffusePage(sharp, diffuser, height, cancel);
}

}  // namespace wren::stencil
