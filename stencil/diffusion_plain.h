// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion one pixel after the other, on two rolling rows of errors.
// It is what the wavefront has to equal, and what a reader should read first.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace stencil {

/// Halftones a page of known size block by block, from the top. For each block the
/// caller fills row(0), row(1), ... with pixels and calls run.
class PlainDiffuser {
 public:
  static constexpr int kBlockRows = 16;

  /// `width` and `height` are at least 1; a pixel above `threshold` becomes white.
  PlainDiffuser(int width, int height, int threshold);

  /// Where the `width` pixels of a row of the next block go; 0 <= r < kBlockRows.
  std::uint8_t* row(int r) { return rows_.data() + at(r) * at(width_); }

  /// Writes the next `rows` rows of 0 and 255 to `out`, `stride` bytes apart. All
  /// blocks but the last have kBlockRows rows.
  void run(std::uint8_t* out, std::ptrdiff_t stride, int rows);

 private:
  static std::size_t at(int index) { return static_cast<std::size_t>(index); }
  void run_row(const std::uint8_t* pixels, std::uint8_t* out);
  float error_of(float v, bool white, bool whiteLeft, int x) const;
  void spread(float error, int x);

  int width_;
  int height_;
  float threshold_;
  int y_ = 0;
  std::vector<std::uint8_t> rows_;
  std::vector<float> current_;       // what the pixels of this row have received
  std::vector<float> next_;          // the same for the row below
  std::vector<std::uint8_t> above_;  // the decided pixels of the row above
};

}  // namespace stencil
