// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The tone curve and the unsharp mask of a page as a stream of rows: what goes in
// is the page, what comes out is one sharpened row after the other. Only the rows
// under the blur are held, so a page of any length needs the memory of some 20 rows.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stencil/blur_kernel.h"
#include "stencil/tone.h"

namespace stencil {

class SharpRows {
 public:
  /// The page is read as rows are asked for and stays the caller's; `width` and
  /// `height` are at least 1. Row y + 5 has been read when row y is returned.
  SharpRows(const std::uint8_t* page, std::ptrdiff_t strideBytes, int width, int height,
            const GreyTable& tone);

  /// Writes the next row. `out` has room for the width rounded up to a multiple of
  /// 16; the bytes beyond the width are meaningless.
  void next(std::uint8_t* out);

 private:
  static constexpr int kChunk = 16;   // pixels that are skipped together
  static constexpr int kMargin = 16;  // floats beside each row; the blur reads 5 of them
  static constexpr int kHalf = kBlurTaps / 2;
  static constexpr int kToneRows = kHalf + 1;
  static constexpr int kMixed = -1;  // the level of a chunk that has several

  // What the last rows of one chunk had in common.
  struct Run {
    int level = kMixed;
    int rows = 0;
  };

  void read_row();
  void apply_tone(const std::uint8_t* pixels, float* out);
  void blur_row(const float* tone, float* out);
  int level_after_blur(int chunk) const;
  void extend_runs();
  void blur_columns();
  void sharpen(const float* tone, std::uint8_t* out) const;
  static std::size_t at(int index) { return static_cast<std::size_t>(index); }
  bool is_alike(int chunk) const { return runs_[at(chunk)].rows >= kBlurTaps; }

  float* tone_row(int y) { return tone_.data() + (y % kToneRows) * pitch_ + kMargin; }
  float* blurred_row(int y) { return blurred_.data() + (y % kBlurTaps) * pitch_ + kMargin; }

  const std::uint8_t* page_;
  std::ptrdiff_t stride_;
  int width_;
  int height_;
  int chunks_;
  std::ptrdiff_t pitch_;
  int read_ = 0;  // rows of the page that have been read
  int y_ = 0;     // the row that comes next
  BlurWeights weights_;
  GreyTable table_;
  std::vector<float> tone_;         // the last kToneRows rows after the tone curve
  std::vector<float> blurred_;      // the last kBlurTaps rows, blurred along the row
  std::vector<float> columns_;      // one row, blurred both ways
  std::vector<int> levels_;         // of the chunks of the row read last
  std::vector<int> blurredLevels_;  // of its chunks after the blur along the row
  std::vector<Run> runs_;           // of the chunks, down the page
};

}  // namespace stencil
