// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/diffusion_plain.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "stencil/error_diffusion.h"

namespace stencil {

PlainDiffuser::PlainDiffuser(int width, int height, int threshold)
    : width_(width),
      height_(height),
      threshold_(static_cast<float>(threshold)),
      rows_(at(width) * kBlockRows),
      current_(at(width)),
      next_(at(width)),
      above_(at(width)) {}

void PlainDiffuser::run(std::uint8_t* out, std::ptrdiff_t stride, int rows) {
  for (int r = 0; r < rows; ++r) run_row(row(r), out + r * stride);
}

void PlainDiffuser::run_row(const std::uint8_t* pixels, std::uint8_t* out) {
  bool whiteLeft = true;
  for (int x = 0; x < width_; ++x) {
    const float v = current_[at(x)] + static_cast<float>(pixels[x]);
    const bool white = v > threshold_;
    spread(error_of(v, white, whiteLeft, x), x);
    out[x] = white ? 255 : 0;
    whiteLeft = white;
  }
  std::copy_n(out, width_, above_.begin());
  std::swap(current_, next_);
  std::fill(next_.begin(), next_.end(), 0.0F);
  ++y_;
}

// Inside the image white counts for less beside black neighbours, which pulls the
// pixels that follow towards white.
float PlainDiffuser::error_of(float v, bool white, bool whiteLeft, int x) const {
  if (!white) return v;
  const bool interior = y_ >= 1 && y_ < height_ - 1 && x >= 1 && x < width_ - 1;
  if (!interior) return v - kWhite;
  float s = 0.0F;
  if (!whiteLeft) s = s + kNeighbourStep;
  if (above_[at(x)] == 0) s = s + kNeighbourStep;
  return v - kWhite * (1.0F - s);
}

void PlainDiffuser::spread(float error, int x) {
  std::array<float, std::size(kDiffusionTaps)> shares{};
  for (std::size_t k = 0; k < shares.size(); ++k) shares[k] = error * kDiffusionTaps[k].weight;
  for (std::size_t k = 0; k < shares.size(); ++k) {
    const int target = x + kDiffusionTaps[k].dx;
    if (target < 0 || target >= width_) continue;
    float& sum = (kDiffusionTaps[k].dy == 0 ? current_ : next_)[at(target)];
    sum = sum + shares[k];
  }
}

}  // namespace stencil
