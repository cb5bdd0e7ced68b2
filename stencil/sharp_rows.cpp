// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharp_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "stencil/gaussian.h"
#include "stencil/pixel_run.h"
#include "stencil/simd.h"
#include "stencil/unsharp.h"

namespace stencil {
namespace {

BlurWeights stencil_weights() {
  std::array<double, kBlurTaps> kernel{};
  generateGaussianKernel1D(kBlurTaps, kUnsharpSigma, kernel.data());
  return blur_weights(kernel.data());
}

// Whole numbers in floats: 4 x level - 3 x blur is exact, from -765 to 1020.
inline I32x4 sharpened(const float* tone, const float* blurred) {
  const F32x4 sum = load<F32x4>(tone) * splat(4.0F) - load<F32x4>(blurred) * splat(3.0F);
  return __builtin_convertvector(sum, I32x4);
}

// Calls `work`(first column, last column + 1) for each longest stretch of chunks that
// are not alike.
template <typename IsAlike, typename Work>
inline void for_each_mixed_stretch(int chunks, int chunkPx, IsAlike isAlike, Work work) {
  for (int chunk = 0; chunk < chunks; ++chunk) {
    if (isAlike(chunk)) continue;
    const int first = chunk;
    while (chunk < chunks && !isAlike(chunk)) ++chunk;
    work(first * chunkPx, chunk * chunkPx);
  }
}

}  // namespace

SharpRows::SharpRows(const std::uint8_t* page, std::ptrdiff_t strideBytes, int width, int height,
                     const GreyTable& tone)
    : page_(page),
      stride_(strideBytes),
      width_(width),
      height_(height),
      chunks_((width + kChunk - 1) / kChunk),
      pitch_(kMargin + std::ptrdiff_t{chunks_} * kChunk + kMargin),
      weights_(stencil_weights()),
      table_(tone),
      tone_(static_cast<std::size_t>(pitch_) * kToneRows),
      blurred_(static_cast<std::size_t>(pitch_) * kBlurTaps),
      columns_(static_cast<std::size_t>(pitch_)),
      levels_(at(chunks_)),
      blurredLevels_(at(chunks_)),
      runs_(at(chunks_)) {}

void SharpRows::next(std::uint8_t* out) {
  while (read_ < std::min(y_ + kHalf + 1, height_)) read_row();
  if (y_ + kHalf >= height_) extend_runs();  // the last row stands in for those below it
  blur_columns();
  sharpen(tone_row(y_), out);
  ++y_;
}

void SharpRows::read_row() {
  float* tone = tone_row(read_);
  apply_tone(page_ + read_ * stride_, tone);
  blur_row(tone, blurred_row(read_));
  // The first row stands in for those above it, and for itself.
  for (int i = read_ == 0 ? kHalf : 0; i >= 0; --i) extend_runs();
  ++read_;
}

void SharpRows::apply_tone(const std::uint8_t* pixels, float* out) {
  int x = 0;
  for (std::size_t chunk = 0; x + kChunk <= width_; x += kChunk, ++chunk) {
    const bool alike = are_sixteen_equal(pixels + x);
    levels_[chunk] = alike ? table_[pixels[x]] : kMixed;
    if (alike) {
      std::fill_n(out + x, kChunk, static_cast<float>(table_[pixels[x]]));
    } else {
      for (int i = x; i < x + kChunk; ++i) out[i] = static_cast<float>(table_[pixels[i]]);
    }
  }
  if (x < width_) levels_.back() = kMixed;
  for (; x < width_; ++x) out[x] = static_cast<float>(table_[pixels[x]]);
  std::fill_n(out - kMargin, kMargin, out[0]);
  std::fill(out + width_, out + pitch_ - kMargin, out[width_ - 1]);
}

// The level of a chunk whose pixels and neighbours are all alike: a blur of one
// level is that level.
int SharpRows::level_after_blur(int chunk) const {
  const int level = levels_[at(chunk)];
  const bool alike = (chunk == 0 || levels_[at(chunk - 1)] == level) &&
                     (chunk + 1 == chunks_ || levels_[at(chunk + 1)] == level);
  return alike ? level : kMixed;
}

void SharpRows::blur_row(const float* tone, float* out) {
  std::array<const float*, kBlurTaps> taps{};
  for (int k = 0; k < kBlurTaps; ++k) taps[static_cast<std::size_t>(k)] = tone + k - kHalf;
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    const int level = level_after_blur(chunk);
    blurredLevels_[at(chunk)] = level;
    if (level == kMixed) continue;
    std::fill_n(out + std::ptrdiff_t{chunk} * kChunk, kChunk, static_cast<float>(level));
  }
  for_each_mixed_stretch(
      chunks_, kChunk, [this](int chunk) { return blurredLevels_[at(chunk)] != kMixed; },
      [&](int from, int to) { blur_taps(taps.data(), weights_, out, from, to); });
}

void SharpRows::extend_runs() {
  for (std::size_t chunk = 0; chunk < runs_.size(); ++chunk) {
    Run& run = runs_[chunk];
    const int level = blurredLevels_[chunk];
    if (level == kMixed || level != run.level) run = {level, 0};
    if (level != kMixed) ++run.rows;
  }
}

void SharpRows::blur_columns() {
  std::array<const float*, kBlurTaps> taps{};
  for (int k = 0; k < kBlurTaps; ++k) {
    const int y = std::clamp(y_ + k - kHalf, 0, height_ - 1);
    taps[static_cast<std::size_t>(k)] = blurred_row(y);
  }
  for_each_mixed_stretch(
      chunks_, kChunk, [this](int chunk) { return is_alike(chunk); },
      [&](int from, int to) { blur_taps(taps.data(), weights_, columns_.data(), from, to); });
}

void SharpRows::sharpen(const float* tone, std::uint8_t* out) const {
  for (int chunk = 0; chunk < chunks_; ++chunk) {
    const int x = chunk * kChunk;
    if (is_alike(chunk)) {  // 4 x level - 3 x level
      std::memset(out + x, runs_[at(chunk)].level, kChunk);
      continue;
    }
    const float* t = tone + x;
    const float* b = columns_.data() + x;
    store(out + x, narrow_clamped(sharpened(t, b), sharpened(t + 4, b + 4), sharpened(t + 8, b + 8),
                                  sharpened(t + 12, b + 12)));
  }
}

}  // namespace stencil
