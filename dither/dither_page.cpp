// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/dither_page.h"

#include "dither/byte_vector.h"
#include "dither/error_diffusion_scalar.h"
#include "dither/error_diffusion_wavefront.h"
#include "dither/level_rows.h"
#include "dither/methods.h"
#include "dither/ordered_dither.h"

namespace {

bool compare(const ThresholdCell& cell, const LevelRows& rows) {
  ditherByThresholds(cell, rows);
  return true;
}

template <const DiffusionKernel& Kernel>
bool diffuse(const LevelRows& rows, BitmapAllocator allocator) {
#ifdef WREN_HAS_BYTE_VECTORS
  return diffuseWavefront<Kernel>(rows, allocator);
#else
  return diffusePlain(Kernel, rows, allocator);
#endif
}

}  // namespace

bool ditherPage(std::int64_t method, const DitherPage& page, BitmapAllocator allocator) {
  const LevelRows rows(page);
  switch (ditherMethodOf(method)) {
    case DitherMethod::kThreshold:
      return compare(fixedThresholdCell(), rows);
    case DitherMethod::kOrdered:
      return compare(orderedCell(), rows);
    case DitherMethod::kBayer:
      return compare(bayerCell(), rows);
    case DitherMethod::kBurkes:
      return diffuse<kBurkes>(rows, allocator);
    case DitherMethod::kStucki:
      return diffuse<kStucki>(rows, allocator);
    case DitherMethod::kJarvisJudiceNinke:
      return diffuse<kJarvisJudiceNinke>(rows, allocator);
    case DitherMethod::kSierra:
      return diffuse<kSierra>(rows, allocator);
    case DitherMethod::kStevensonArce:
      return diffuse<kStevensonArce>(rows, allocator);
    case DitherMethod::kFloydSteinberg:
      break;
  }
  return diffusePlain(kFloydSteinberg, rows, allocator);
}
