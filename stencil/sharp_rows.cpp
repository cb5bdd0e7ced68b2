// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharp_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "stencil/equal_pixels.h"
#include "stencil/gaussian_kernel.h"
#include "stencil/sharpen_kernel.h"

namespace wren::stencil {
namespace {

BlurWeights stencilBlurWeights() {
  std::array<double, kUnsharpSize> kernel{};
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel.data());
  return blurWeights(kernel.data());
}

// Calls `work(first column, last column + 1)` for each longest run of chunks that are not
// uniform.
template <typename IsUniform, typename Work>
inline void forEachMixedRun(int chunks, int chunkPx, IsUniform isUniform, Work work) {
  for (int chunk = 0; chunk < chunks; ++chunk) {
    if (isUniform(chunk)) continue;
    const int first = chunk;
    while (chunk < chunks && !isUniform(chunk)) ++chunk;
    work(first * chunkPx, chunk * chunkPx);
  }
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
      runs_(at(chunks_)) {}

void SharpRows::next(std::uint8_t* out) {
  while (read_ < std::min(y_ + kBlurRadius + 1, height_)) readRow();
  if (y_ + kBlurRadius >= height_) extendRuns();  // rows below the page repeat the last one
  blurColumns();
  sharpenRow(toneRow(y_), out);
  ++y_;
}

void SharpRows::readRow() {
  float* tone = toneRow(read_);
  applyCurve(page_ + read_ * stride_, tone);
  repeatBorders(tone);
  blurRow(tone, blurredRow(read_));
  // The first row also counts for the rows above the page, which repeat it.
  for (int i = read_ == 0 ? kBlurRadius : 0; i >= 0; --i) extendRuns();
  ++read_;
}

void SharpRows::applyCurve(const std::uint8_t* pixels, float* out) {
  int x = 0;
  for (std::size_t chunk = 0; x + kChunk <= width_; x += kChunk, ++chunk) {
    const bool uniform = areSixteenEqual(pixels + x);
    levels_[chunk] = uniform ? curve_[pixels[x]] : kMixed;
    if (uniform) {
      std::fill_n(out + x, kChunk, static_cast<float>(curve_[pixels[x]]));
    } else {
      for (int i = x; i < x + kChunk; ++i) out[i] = static_cast<float>(curve_[pixels[i]]);
    }
  }
  if (x < width_) levels_.back() = kMixed;
  for (; x < width_; ++x) out[x] = static_cast<float>(curve_[pixels[x]]);
}

void SharpRows::repeatBorders(float* row) const {
  std::fill_n(row - kMargin, kMargin, row[0]);
  std::fill(row + width_, row + pitch_ - kMargin, row[width_ - 1]);
}

// A chunk that is uniform together with its neighbours keeps its level: the weights of
// the blur add up to 1.
int SharpRows::levelAfterBlur(int chunk) const {
  const int level = levels_[at(chunk)];
  const bool uniform = (chunk == 0 || levels_[at(chunk - 1)] == level) &&
                       (chunk + 1 == chunks_ || levels_[at(chunk + 1)] == level);
  return uniform ? level : kMixed;
}

void SharpRows::blurRow(const float* tone, float* out) {
  std::array<const float*, kUnsharpSize> rows{};
  for (int k = 0; k < kUnsharpSize; ++k) rows[at(k)] = tone + k - kBlurRadius;
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    const int level = levelAfterBlur(chunk);
    blurredLevels_[at(chunk)] = level;
    if (level == kMixed) continue;
    std::fill_n(out + std::ptrdiff_t{chunk} * kChunk, kChunk, static_cast<float>(level));
  }
  forEachMixedRun(
      chunks_, kChunk, [this](int chunk) { return blurredLevels_[at(chunk)] != kMixed; },
      [&](int from, int to) { blur(rows.data(), weights_, out, from, to); });
}

void SharpRows::extendRuns() {
  for (std::size_t chunk = 0; chunk < runs_.size(); ++chunk) {
    UniformRun& run = runs_[chunk];
    const int level = blurredLevels_[chunk];
    if (level == kMixed || level != run.level) run = {level, 0};
    if (level != kMixed) ++run.rows;
  }
}

void SharpRows::blurColumns() {
  std::array<const float*, kUnsharpSize> rows{};
  for (int k = 0; k < kUnsharpSize; ++k) {
    rows[at(k)] = blurredRow(std::clamp(y_ + k - kBlurRadius, 0, height_ - 1));
  }
  forEachMixedRun(
      chunks_, kChunk, [this](int chunk) { return isUniform(chunk); },
      [&](int from, int to) { blur(rows.data(), weights_, columns_.data(), from, to); });
}

// A uniform chunk keeps its level: the two gains differ by 1.
void SharpRows::sharpenRow(const float* tone, std::uint8_t* out) const {
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    if (!isUniform(chunk)) continue;
    std::memset(out + std::ptrdiff_t{chunk} * kChunk, runs_[at(chunk)].level, kChunk);
  }
  forEachMixedRun(
      chunks_, kChunk, [this](int chunk) { return isUniform(chunk); },
      [&](int from, int to) { sharpen(tone, columns_.data(), out, from, to); });
}

}  // namespace wren::stencil
