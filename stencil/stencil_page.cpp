// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/stencil_page.h"

#include <algorithm>

#include "stencil/diffusion_wavefront.h"
#include "stencil/level_counter.h"
#include "stencil/sharp_rows.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"

namespace {

using stencil::LevelCounter;
using stencil::SharpRows;
using stencil::WavefrontDiffuser;

constexpr int kRowsPerQuestion = 256;

struct Question {
  StencilGoesOn goesOn;
  void* context;

  bool yes() const { return goesOn == nullptr || goesOn(context); }
};

bool count_page(const std::uint8_t* source, std::ptrdiff_t stride, int width, int height,
                const Question& question, LevelCounter& counter) {
  for (int y = 0; y < height; ++y) {
    if (y % kRowsPerQuestion == 0 && !question.yes()) return false;
    counter.add_row(source + y * stride, width);
  }
  return true;
}

bool diffuse_page(SharpRows& sharp, WavefrontDiffuser& diffuser, int height, std::uint8_t* result,
                  std::ptrdiff_t stride, const Question& question) {
  for (int y = 0; y < height; y += WavefrontDiffuser::kBlockRows) {
    if (!question.yes()) return false;
    const int rows = std::min(WavefrontDiffuser::kBlockRows, height - y);
    for (int r = 0; r < rows; ++r) sharp.next(diffuser.row(r));
    diffuser.run(result + y * stride, stride, rows);
  }
  return true;
}

}  // namespace

bool stencil_page(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                  std::uint8_t* result, std::ptrdiff_t resultStride, StencilGoesOn goesOn,
                  void* context) {
  if (width <= 0 || height <= 0) return true;
  const Question question = {goesOn, context};
  LevelCounter counter;
  if (!count_page(source, sourceStride, width, height, question, counter)) return false;
  const int threshold = threshold_of_counts(counter.counts());
  SharpRows sharp(source, sourceStride, width, height, stencil_tone_table());
  WavefrontDiffuser diffuser(width, height, threshold);
  return diffuse_page(sharp, diffuser, height, result, resultStride, question);
}
