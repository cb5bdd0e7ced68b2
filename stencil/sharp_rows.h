// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The tone curve and the unsharp mask of a page, streamed: each call returns the next
// sharpened row. Only the rows under the blur are in memory, about 20 rows for a page
// of any length.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stencil/blur_kernel.h"
#include "stencil/recipe.h"
#include "stencil/tone_curve.h"

namespace wren::stencil {

class SharpRows {
 public:
  /// Neither owns nor copies the page: it has to stay readable. Row y + `kBlurRadius` has
  /// been read when row y is returned. `width` and `height` are at least 1.
  SharpRows(const std::uint8_t* page, std::ptrdiff_t strideBytes, int width, int height,
            const ToneCurve& curve);

  /// Writes the next row. `out` has room for the width rounded up to a multiple of
  /// 16; the bytes beyond the width are undefined.
  void next(std::uint8_t* out);

 private:
  // Pixels that are skipped together.
  static constexpr int kChunk = 16;
  // Floats beside each row that repeat its first and last pixel.
  static constexpr int kMargin = 16;
  static_assert(kBlurRadius <= kMargin, "the blur reads inside the margins");
  static_assert(kBlurRadius <= kChunk, "the blur of a chunk reads its two neighbours only");

  static constexpr int kToneRows = kBlurRadius + 1;
  static constexpr int kBlurredRows = kUnsharpSize;
  static constexpr int kMixed = -1;  // the level of a chunk with several levels

  // Rows up to the one read last in which a chunk was uniform with the same level.
  struct UniformRun {
    int level = kMixed;
    int rows = 0;
  };

  void readRow();
  void applyCurve(const std::uint8_t* pixels, float* out);
  void repeatBorders(float* row) const;
  void blurRow(const float* tone, float* out);
  int levelAfterBlur(int chunk) const;
  void extendRuns();
  void blurColumns();
  void sharpenRow(const float* tone, std::uint8_t* out) const;

  static std::size_t at(int index) { return static_cast<std::size_t>(index); }
  // True when all rows under the blur are uniform with one level in this chunk.
  bool isUniform(int chunk) const { return runs_[at(chunk)].rows >= kUnsharpSize; }

  float* toneRow(int y) { return tone_.data() + (y % kToneRows) * pitch_ + kMargin; }
  float* blurredRow(int y) { return blurred_.data() + (y % kBlurredRows) * pitch_ + kMargin; }

  const std::uint8_t* page_;
  std::ptrdiff_t stride_;
  int width_;
  int height_;
  int chunks_;
  std::ptrdiff_t pitch_;  // floats from row to row
  int read_ = 0;          // rows read so far
  int y_ = 0;             // the row returned next
  BlurWeights weights_;
  ToneCurve curve_;
  std::vector<float> tone_;         // ring of rows after the tone curve
  std::vector<float> blurred_;      // ring of rows, blurred along the row
  std::vector<float> columns_;      // one row, blurred in both directions
  std::vector<int> levels_;         // of the chunks of the row read last
  std::vector<int> blurredLevels_;  // of the same chunks after the blur along the row
  std::vector<UniformRun> runs_;    // of each chunk, down the page
};

}  // namespace wren::stencil
