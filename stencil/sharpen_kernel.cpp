// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharpen_kernel.h"

#include "stencil/recipe.h"
#include "stencil/simd.h"

namespace wren::stencil {
namespace {

inline I32x4 difference(const float* levels, const float* blurred) {
  const F32x4 sum =
      load<F32x4>(levels) * splat(kLevelGain) - load<F32x4>(blurred) * splat(kBlurGain);
  return __builtin_convertvector(sum, I32x4);
}

}  // namespace

void sharpen(const float* levels, const float* blurred, std::uint8_t* out, int from, int to) {
  for (int x = from; x < to; x += 16) {
    const float* l = levels + x;
    const float* b = blurred + x;
    store(out + x, narrowClamped(difference(l, b), difference(l + 4, b + 4),
                                 difference(l + 8, b + 8), difference(l + 12, b + 12)));
  }
}

}  // namespace wren::stencil
