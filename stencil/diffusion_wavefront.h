// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion on 16 rows at once. Along a row each pixel waits for the one
// before it, so the rows are the lanes: each runs three columns behind the one
// above, where all that it needs from above is known. The results are those of
// PlainDiffuser to the bit, because every pixel receives its shares in the same
// order.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace stencil {

/// Halftones a page block by block; used like PlainDiffuser.
class WavefrontDiffuser {
 public:
  static constexpr int kBlockRows = 16;

  /// `width` and `height` are at least 1; a pixel above `threshold` becomes white.
  WavefrontDiffuser(int width, int height, int threshold);

  /// Where the `width` pixels of a row of the next block go; 0 <= r < kBlockRows.
  std::uint8_t* row(int r) {
    return rows_.data() + static_cast<std::ptrdiff_t>(r) * pitch_ + kMargin;
  }

  /// Writes the next `rows` rows of 0 and 255 to `out`, `stride` bytes apart. All
  /// blocks but the last have kBlockRows rows.
  void run(std::uint8_t* out, std::ptrdiff_t stride, int rows);

 private:
  static constexpr int kLag = 3;
  static constexpr int kDelay = kLag * kBlockRows;  // columns between two blocks
  static constexpr int kMargin = kDelay + 16;       // so that slanted reads stay inside

  void slant();
  void unslant();
  void diffuse();

  int width_;
  int height_;
  float threshold_;
  int y_ = 0;
  int steps_;             // columns of a slanted block, a multiple of 16
  std::ptrdiff_t pitch_;  // bytes from row to row
  std::vector<std::uint8_t> rows_;
  std::vector<std::uint8_t> slanted_;  // 16 bytes per step: one pixel of each row
  std::vector<float> sums_;            // what the row above a block leaves to its first row
  std::vector<std::int32_t> rebates_;  // and what its black pixels take off a white below
};

}  // namespace stencil
