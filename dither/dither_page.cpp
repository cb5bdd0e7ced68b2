// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/dither_page.h"

#include <cstddef>

#include "dither/error_diffusion_scalar.h"
#include "dither/error_diffusion_wavefront.h"
#include "dither/level_rows.h"
#include "dither/methods.h"
#include "dither/ordered_dither.h"

namespace wren::dither {

bool ditherPage(std::int64_t method, const Page& page, Allocator allocator) {
  const std::size_t index = methodIndex(method);
  const Method& row = kMethods[index];
  const LevelRows rows(page);
  if (row.kind == MethodKind::kOrderedDither) {
    ditherOrdered(*row.thresholds, rows);
    return true;
  }
  const DiffuseFunction diffuseVector = wavefrontKernel(index);
  if (diffuseVector != nullptr) return diffuseVector(rows, allocator);
  return diffuseScalar(*row.diffusion, rows, allocator);
}

}  // namespace wren::dither
