// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharp_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "stencil/gaussian_kernel.h"
#include "stencil/sharpen_kernel.h"

namespace wren::stencil {
namespace {

BlurWeights stencilBlurWeights() {
  std::array<double, kUnsharpSize> kernel{};
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel.data());
  return blurWeights(kernel.data());
}

}  // namespace

SharpRows::SharpRows(const std::uint8_t* page, std::ptrdiff_t strideBytes, int width, int height,
                     const ToneCurve& curve)
    : page_(page),
      stride_(strideBytes),
      width_(width),
      height_(height),
      chunks_((width + kChunk - 1) / kChunk),
      pitch_(kMargin + std::ptrdiff_t{chunks_} * kChunk + kMargin),
      weights_(stencilBlurWeights()),
      curve_(curve),
      tone_(static_cast<std::size_t>(pitch_) * kToneRows),
      blurred_(static_cast<std::size_t>(pitch_) * kBlurredRows),
      columns_(static_cast<std::size_t>(pitch_)),
      levels_(at(chunks_)),
      blurredLevels_(at(chunks_)),
      runLevels_(at(chunks_), kMixedChunk),
      runRows_(at(chunks_)) {}

void SharpRows::next(std::uint8_t* out) {
  while (read_ < std::min(y_ + kBlurRadius + 1, height_)) readRow();
  if (y_ + kBlurRadius >= height_) extendRuns();  // rows below the page repeat the last one
  // Uniform: all rows under the blur have one level in the chunk.
  const std::int16_t* rows = runRows_.data();
  findMixedRuns([rows](int chunk) { return rows[chunk] >= kUnsharpSize; });
  blurColumns();
  sharpenRow(toneRow(y_), out);
  ++y_;
}

void SharpRows::readRow() {
  std::int16_t* tone = toneRow(read_);
  applyCurve(page_ + read_ * stride_, tone);
  repeatBorders(tone);
  blurRow(tone, blurredRow(read_));
  // The first row also counts for the rows above the page, which repeat it.
  for (int i = read_ == 0 ? kBlurRadius : 0; i >= 0; --i) extendRuns();
  ++read_;
}

void SharpRows::applyCurve(const std::uint8_t* pixels, std::int16_t* out) {
  const int whole = width_ / kChunk;
  applyToneCurve(curve_, pixels, out, levels_.data(), whole);
  if (whole == chunks_) return;
  levels_.back() = kMixedChunk;
  for (int x = whole * kChunk; x < width_; ++x) {
    out[x] = static_cast<std::int16_t>(curve_[pixels[x]] << kLevelFractionBits);
  }
}

void SharpRows::repeatBorders(std::int16_t* row) const {
  std::fill_n(row - kMargin, kMargin, row[0]);
  std::fill(row + width_, row + pitch_ - kMargin, row[width_ - 1]);
}

// A chunk that is uniform together with its neighbours keeps its level: the weights of
// the blur add up to 1.
void SharpRows::findLevelsAfterBlur() {
  const std::int16_t* levels = levels_.data();
  std::int16_t* after = blurredLevels_.data();
  const int last = chunks_ - 1;
  after[0] = levels[0] == levels[std::min(1, last)] ? levels[0] : kMixedChunk;
  for (int chunk = 1; chunk < last; ++chunk) {
    const std::int16_t level = levels[chunk];
    const bool isUniform = (levels[chunk - 1] == level) & (levels[chunk + 1] == level);
    after[chunk] = isUniform ? level : kMixedChunk;
  }
  if (last > 0) after[last] = levels[last - 1] == levels[last] ? levels[last] : kMixedChunk;
}

template <typename IsUniform>
void SharpRows::findMixedRuns(IsUniform isUniform) {
  mixedRuns_.clear();
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    if (isUniform(chunk)) continue;
    const int first = chunk;
    while (chunk < chunks_ && !isUniform(chunk)) ++chunk;
    mixedRuns_.push_back({first, chunk});
  }
}

// Calls `fill(chunk)` for the chunks between the mixed runs.
template <typename Fill>
void SharpRows::forEachUniformChunk(Fill fill) const {
  int chunk = 0;
  for (const ChunkRun& run : mixedRuns_) {
    for (; chunk < run.first; ++chunk) fill(chunk);
    chunk = run.end;
  }
  for (; chunk < chunks_; ++chunk) fill(chunk);
}

void SharpRows::blurRow(const std::int16_t* tone, std::int16_t* out) {
  std::array<const std::int16_t*, kUnsharpSize> rows{};
  for (int k = 0; k < kUnsharpSize; ++k) rows[at(k)] = tone + k - kBlurRadius;
  findLevelsAfterBlur();
  const std::int16_t* levels = blurredLevels_.data();
  findMixedRuns([levels](int chunk) { return levels[chunk] != kMixedChunk; });
  forEachUniformChunk([&](int chunk) {
    std::fill_n(out + std::ptrdiff_t{chunk} * kChunk, kChunk,
                static_cast<std::int16_t>(levels[chunk] << kLevelFractionBits));
  });
  for (const ChunkRun& run : mixedRuns_) {
    blur(rows.data(), weights_, out, run.first * kChunk, run.end * kChunk);
  }
}

// Written for the compiler's vectoriser: no branch, all numbers of one size.
void SharpRows::extendRuns() {
  const std::int16_t* levels = blurredLevels_.data();
  std::int16_t* runLevels = runLevels_.data();
  std::int16_t* rows = runRows_.data();
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    const std::int16_t level = levels[chunk];
    const auto longer = static_cast<std::int16_t>(rows[chunk] + (rows[chunk] < kUnsharpSize));
    const std::int16_t uniform = level == runLevels[chunk] ? longer : std::int16_t{1};
    rows[chunk] = level == kMixedChunk ? std::int16_t{0} : uniform;
    runLevels[chunk] = level;
  }
}

void SharpRows::blurColumns() {
  std::array<const std::int16_t*, kUnsharpSize> rows{};
  for (int k = 0; k < kUnsharpSize; ++k) {
    rows[at(k)] = blurredRow(std::clamp(y_ + k - kBlurRadius, 0, height_ - 1));
  }
  for (const ChunkRun& run : mixedRuns_) {
    blur(rows.data(), weights_, columns_.data(), run.first * kChunk, run.end * kChunk);
  }
}

// A uniform chunk keeps its level: the two gains differ by 1.
void SharpRows::sharpenRow(const std::int16_t* tone, std::uint8_t* out) const {
  forEachUniformChunk([&](int chunk) {
    std::memset(out + std::ptrdiff_t{chunk} * kChunk, runLevels_[at(chunk)], kChunk);
  });
  for (const ChunkRun& run : mixedRuns_) {
    sharpen(tone, columns_.data(), out, run.first * kChunk, run.end * kChunk);
  }
}

}  // namespace wren::stencil
