// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/unsharp.h"

#include <cstddef>

#include "stencil/fast_math.h"
#include "stencil/gaussian.h"
#include "stencil/recipe.h"

QVImage add_Weighted(const QVImage& image, const QVImage& blurred, float weight) {
  QVImage out(image);
  const float gain = 1.0F + weight;
  const float loss = -weight;
  const auto n = static_cast<std::size_t>(std::int64_t{image.width} * image.height);
  for (std::size_t i = 0; i < n; ++i) {
    const float t = static_cast<float>(image.data[i]) * gain +
                    static_cast<float>(blurred.data[i]) * loss + 0.0F;
    out.data[i] = static_cast<std::uint8_t>(myClamp(my_round(t), 0, 255));
  }
  return out;
}

QVImage enh_unsharp_mask(const QVImage& image, float amount, int size) {
  const float weight = amount / wren::stencil::kPercent;
  const QVImage blurred = enh_gaussian_filter_fast(image, size, wren::stencil::kUnsharpSigma);
  return add_Weighted(image, blurred, weight);
}
