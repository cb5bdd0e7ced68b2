// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The product's functions under the names that `StencilHasher` uses.

#pragma once

#include "stencil/error_diffusion.h"
#include "stencil/fast_math.h"
#include "stencil/gaussian.h"
#include "stencil/gaussian_kernel.h"
#include "stencil/moment_threshold.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"
#include "stencil/unsharp.h"

namespace wren::stencil {

struct ProductStencil {
  using Image = QVImage;
  static Image image(int width, int height, int layout, const std::uint8_t* bytes) {
    return {width, height, static_cast<QV_IMG_COLOR>(layout), bytes};
  }
  static constexpr auto cvtGray = ::cvtGray;
  static constexpr auto momentThreshold = ::wren::stencil::momentThreshold;
  static constexpr auto my_sqrt = ::my_sqrt;
  static constexpr auto my_exp = ::my_exp;
  static constexpr auto my_ln = ::my_ln;
  static constexpr auto my_pow = ::my_pow;
  static constexpr auto my_round = ::my_round;
  static constexpr auto generateGaussianKernel1D = ::generateGaussianKernel1D;
  static constexpr auto generateGaussianKernel = ::generateGaussianKernel;
  static constexpr auto thresh_global_moments = ::thresh_global_moments;
  static constexpr auto enh_gaussian_filter_fast = ::enh_gaussian_filter_fast;
  static constexpr auto enh_gaussian_filter = ::enh_gaussian_filter;
  static constexpr auto enh_unsharp_mask = ::enh_unsharp_mask;
  static constexpr auto edf_cus = ::edf_cus;
  static constexpr auto qvTattooDithering = ::qvTattooDithering;
};

}  // namespace wren::stencil
