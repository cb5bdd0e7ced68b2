// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/stencil/result_hash.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tests/reference/stencil.h"
#include "tests/stencil/product_stencil.h"

namespace wren::stencil {
namespace {

struct ReferenceStencil {
  using Image = reference::QVImage;
  static Image image(int width, int height, int layout, const std::uint8_t* bytes) {
    return {width, height, static_cast<reference::QV_IMG_COLOR>(layout), bytes};
  }
  static int momentThreshold(const std::array<std::int32_t, 256>& histogram) {
    return reference::thresh_global_moments_from_counts(
        histogram.data(), std::accumulate(histogram.begin(), histogram.end(), 0));
  }
  static constexpr auto cvtGray = reference::cvtGray;
  static constexpr auto my_sqrt = reference::my_sqrt;
  static constexpr auto my_exp = reference::my_exp;
  static constexpr auto my_ln = reference::my_ln;
  static constexpr auto my_pow = reference::my_pow;
  static constexpr auto my_round = reference::my_round;
  static constexpr auto generateGaussianKernel1D = reference::generateGaussianKernel1D;
  static constexpr auto generateGaussianKernel = reference::generateGaussianKernel;
  static constexpr auto thresh_global_moments = reference::thresh_global_moments;
  static constexpr auto enh_gaussian_filter_fast = reference::enh_gaussian_filter_fast;
  static constexpr auto enh_gaussian_filter = reference::enh_gaussian_filter;
  static constexpr auto enh_unsharp_mask = reference::enh_unsharp_mask;
  static constexpr auto edf_cus = reference::edf_cus;
  static constexpr auto qvTattooDithering = reference::qvTattooDithering;
};

TEST(ResultHash, EqualsThatOfTheReference) {
  EXPECT_EQ(StencilHasher<ProductStencil>().run(), StencilHasher<ReferenceStencil>().run());
}

TEST(ResultHash, SeesASingleBit) {
  ResultHash one;
  ResultHash other;
  one.add(1.0F);
  other.add(std::bit_cast<float>(std::bit_cast<std::uint32_t>(1.0F) + 1U));
  EXPECT_NE(one.value(), other.value());
}

}  // namespace
}  // namespace wren::stencil
