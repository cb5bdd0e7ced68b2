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
#include "stencil/tone_kernel.h"

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
  static constexpr int kChunk = kChunkPx;
  // Levels beside each row that repeat its first and last pixel.
  static constexpr int kMargin = 16;
  static_assert(kBlurRadius <= kMargin, "the blur reads inside the margins");
  static_assert(kBlurRadius <= kChunk, "the blur of a chunk reads its two neighbours only");

  static constexpr int kToneRows = kBlurRadius + 1;
  static constexpr int kBlurredRows = kUnsharpSize;

  // Chunks from `first` up to, not including, `end`.
  struct ChunkRun {
    int first;
    int end;
  };

  void readRow();
  void applyCurve(const std::uint8_t* pixels, std::int16_t* out);
  void repeatBorders(std::int16_t* row) const;
  void blurRow(const std::int16_t* tone, std::int16_t* out);
  void findLevelsAfterBlur();
  void extendRuns();
  template <typename IsUniform>
  void findMixedRuns(IsUniform isUniform);
  template <typename Fill>
  void forEachUniformChunk(Fill fill) const;
  void blurColumns();
  void sharpenRow(const std::int16_t* tone, std::uint8_t* out) const;

  static std::size_t at(int index) { return static_cast<std::size_t>(index); }

  std::int16_t* toneRow(int y) { return tone_.data() + (y % kToneRows) * pitch_ + kMargin; }
  std::int16_t* blurredRow(int y) {
    return blurred_.data() + (y % kBlurredRows) * pitch_ + kMargin;
  }

  const std::uint8_t* page_;
  std::ptrdiff_t stride_;
  int width_;
  int height_;
  int chunks_;
  std::ptrdiff_t pitch_;  // levels from row to row
  int read_ = 0;          // rows read so far
  int y_ = 0;             // the row returned next
  BlurWeights weights_;
  ToneCurve curve_;

  // Levels in sixteenths.
  std::vector<std::int16_t> tone_;     // ring of rows after the tone curve
  std::vector<std::int16_t> blurred_;  // ring of rows, blurred along the row
  std::vector<std::int16_t> columns_;  // one row, blurred in both directions

  // One entry for each chunk.
  std::vector<std::int16_t> levels_;         // level in the row read last
  std::vector<std::int16_t> blurredLevels_;  // the same after the blur along the row
  std::vector<std::int16_t> runLevels_;      // `blurredLevels_` of the row before
  // Rows up to the one read last in which the chunk was uniform with the same level, at most
  // `kUnsharpSize`.
  std::vector<std::int16_t> runRows_;

  // The longest runs of chunks that are not uniform, at first in the row read last, then in the
  // row returned next.
  std::vector<ChunkRun> mixedRuns_;
};

}  // namespace wren::stencil
