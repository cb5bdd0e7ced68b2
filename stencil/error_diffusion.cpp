// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/error_diffusion.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "stencil/diffusion_wavefront.h"

QVImage edf_cus(const QVImage& image, int threshold) {
  using wren::stencil::WavefrontDiffuser;
  QVImage out(image.width, image.height, QV_IMG_GRAY);
  if (image.width <= 0 || image.height <= 0) return out;
  const std::ptrdiff_t stride = image.width;
  WavefrontDiffuser diffuser(image.width, image.height, threshold, {out.data, stride});
  for (int y = 0; y < image.height; y += WavefrontDiffuser::kBlockRows) {
    const int rows = std::min(WavefrontDiffuser::kBlockRows, image.height - y);
    for (int r = 0; r < rows; ++r) {
      std::memcpy(diffuser.row(r), image.data + (y + r) * stride,
                  static_cast<std::size_t>(image.width));
    }
    diffuser.run();
  }
  return out;
}
