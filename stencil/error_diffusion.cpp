// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/error_diffusion.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "stencil/fast_math.h"

namespace {

// The errors that wait for the pixels of the current row and of the next one.
class ErrorRows {
 public:
  explicit ErrorRows(int width) : current_(at(width)), next_(at(width)) {}

  float at_current(int x) const { return current_[at(x)]; }

  void spread(float error, int x, int width) {
    std::array<float, std::size(kDiffusionTaps)> shares{};
    for (std::size_t k = 0; k < shares.size(); ++k) shares[k] = error * kDiffusionTaps[k].weight;
    for (std::size_t k = 0; k < shares.size(); ++k) {
      const int tx = x + kDiffusionTaps[k].dx;
      if (tx < 0 || tx >= width) continue;
      float& target = (kDiffusionTaps[k].dy == 0 ? current_ : next_)[at(tx)];
      target = target + shares[k];
    }
  }

  void advance() {
    std::swap(current_, next_);
    next_.assign(next_.size(), 0.0F);
  }

 private:
  static std::size_t at(int x) { return static_cast<std::size_t>(x); }

  std::vector<float> current_;
  std::vector<float> next_;
};

// The error of a pixel that became white. Inside the image white counts for less
// beside black neighbours, which pulls the pixels that follow towards white.
float white_error(float v, const std::uint8_t* out, std::ptrdiff_t stride, bool interior) {
  if (!interior) return v - kWhite;
  float s = 0.0F;
  if (out[-1] == 0) s = s + kNeighbourStep;
  if (out[-stride] == 0) s = s + kNeighbourStep;
  return v - kWhite * (1.0F - s);
}

}  // namespace

QVImage edf_cus(const QVImage& image, int threshold) {
  QVImage out(image.width, image.height, QV_IMG_GRAY);
  if (image.width <= 0 || image.height <= 0) return out;
  ErrorRows errors(image.width);
  const std::uint8_t* source = image.data;
  std::uint8_t* pixel = out.data;
  for (int y = 0; y < image.height; ++y) {
    const bool innerRow = y >= 1 && y < image.height - 1;
    for (int x = 0; x < image.width; ++x, ++source, ++pixel) {
      const float v = errors.at_current(x) + static_cast<float>(*source);
      const bool white = v > static_cast<float>(threshold);
      *pixel = white ? 255 : 0;
      const bool interior = innerRow && x >= 1 && x < image.width - 1;
      const float error = white ? white_error(v, pixel, image.width, interior) : v;
      errors.spread(error, x, image.width);
    }
    errors.advance();
  }
  return out;
}
