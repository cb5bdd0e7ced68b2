// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharpen_kernel.h"

#include <algorithm>
#include <cstddef>

#include "common/vector_level.h"
#include "common/vector_targets.h"
#include "stencil/blur_kernel.h"
#include "stencil/recipe.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stencil/sharpen_kernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef WREN_STENCIL_SHARPEN_KERNEL
#define WREN_STENCIL_SHARPEN_KERNEL

namespace wren::stencil {

inline constexpr auto kLevelFactor = static_cast<std::int16_t>(kLevelGain);
inline constexpr auto kBlurFactor = static_cast<std::int16_t>(kBlurGain);
static_assert(kLevelFactor * (255 << kLevelFractionBits) <= 32767,
              "differences in sixteenths fit in 16 bits");

}  // namespace wren::stencil

#endif  // WREN_STENCIL_SHARPEN_KERNEL

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::stencil::HWY_NAMESPACE {

void sharpenVectors(const std::int16_t* levels, const std::int16_t* blurred, std::uint8_t* out,
                    int from, int to) {
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::ScalableTag<std::int16_t> words;
  const hn::Rebind<std::uint8_t, decltype(words)> bytes;
  const auto levelFactor = hn::Set(words, kLevelFactor);
  const auto blurFactor = hn::Set(words, kBlurFactor);
  for (int x = from; x < to; x += static_cast<int>(hn::MaxLanes(words))) {
    const auto difference = hn::Sub(hn::Mul(hn::LoadU(words, levels + x), levelFactor),
                                    hn::Mul(hn::LoadU(words, blurred + x), blurFactor));
    hn::StoreU(hn::DemoteTo(bytes, hn::ShiftRight<kLevelFractionBits>(difference)), bytes, out + x);
  }
}

}  // namespace wren::stencil::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::stencil {
namespace {

void sharpenScalar(const std::int16_t* levels, const std::int16_t* blurred, std::uint8_t* out,
                   int from, int to) {
  for (int x = from; x < to; ++x) {
    const int difference = kLevelFactor * levels[x] - kBlurFactor * blurred[x];
    out[x] = static_cast<std::uint8_t>(std::clamp(difference >> kLevelFractionBits, 0, 255));
  }
}

constexpr KernelTable<decltype(&sharpenScalar)> kSharpen =
    WREN_KERNEL_TABLE(sharpenScalar, sharpenVectors);

}  // namespace

void sharpen(const std::int16_t* levels, const std::int16_t* blurred, std::uint8_t* out, int from,
             int to) {
  kernelOf(kSharpen)(levels, blurred, out, from, to);
}

}  // namespace wren::stencil

#endif  // HWY_ONCE
