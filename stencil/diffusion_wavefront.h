// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion of the stencil on 16 rows at once. Each lane is a row and runs
// `kDiffusionLag` columns behind the row above. Every pixel receives its error terms in
// raster order, so the result has the same bits. Drawing: docs/KERNELS.md.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stencil/recipe.h"

namespace wren::stencil {

/// Halftones a page of known size in blocks of rows, from the top. For each block the
/// caller fills row(0), row(1), ... with grey levels and calls `run`.
class WavefrontDiffuser {
 public:
  static constexpr int kBlockRows = 16;

  /// A pixel becomes white when its level and its error terms are above `threshold`.
  /// `width` and `height` are at least 1.
  WavefrontDiffuser(int width, int height, int threshold);

  /// The `width` levels of a row of the next block; 0 <= r < kBlockRows.
  std::uint8_t* row(int r) {
    return rows_.data() + static_cast<std::ptrdiff_t>(r) * pitch_ + kMargin;
  }

  /// Writes the next `rows` rows of 0 and 255 to `out`, `stride` bytes apart. All
  /// blocks but the last have `kBlockRows` rows.
  void run(std::uint8_t* out, std::ptrdiff_t stride, int rows);

 private:
  static constexpr int kDelay = kDiffusionLag * kBlockRows;  // steps from block to block
  static constexpr int kMargin = kDelay + 16;                // skewed reads stay inside

  void skew();
  void unskew();
  void diffuse();

  int width_;
  int height_;
  float threshold_;
  int y_ = 0;
  int steps_;             // of a skewed block, a multiple of 16
  std::ptrdiff_t pitch_;  // bytes from row to row
  std::vector<std::uint8_t> rows_;
  std::vector<std::uint8_t> skewed_;       // 16 bytes per step: one pixel of each row
  std::vector<float> sums_;                // error terms for the first row of the next block
  std::vector<std::int32_t> corrections_;  // neighbour corrections for the same row
};

}  // namespace wren::stencil
