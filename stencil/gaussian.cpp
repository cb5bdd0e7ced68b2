// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "stencil/fast_math.h"

namespace {

bool is_kernel_size(int size) {
  return size > 0 && size % 2 == 1;
}

std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}

void scale_to_one(double* kernel, std::size_t entries) {
  double sum = 0.0;
  for (std::size_t j = 0; j < entries; ++j) sum = sum + kernel[j];
  for (std::size_t j = 0; j < entries; ++j) kernel[j] = kernel[j] / sum;
}

const std::uint8_t* row_of(const QVImage& image, int y) {
  return image.data + static_cast<std::ptrdiff_t>(y) * image.width;
}

// Taps outside, pixels inside: the compiler vectorises across x while each pixel
// keeps its own order of additions.
void add_tap(const std::uint8_t* row, double weight, std::vector<double>& sums) {
  for (std::size_t x = 0; x < sums.size(); ++x) {
    sums[x] = sums[x] + static_cast<double>(row[x]) * weight;
  }
}

void store_rounded(const std::vector<double>& sums, std::uint8_t* out) {
  for (std::size_t x = 0; x < sums.size(); ++x) {
    out[x] = static_cast<std::uint8_t>(my_round(static_cast<float>(sums[x])) & 255);
  }
}

// A row with its first and last pixel repeated `half` times beyond the ends.
void pad_row(const std::uint8_t* row, int width, int half, std::vector<std::uint8_t>& padded) {
  std::fill_n(padded.begin(), half, row[0]);
  std::copy_n(row, width, padded.begin() + half);
  std::fill_n(padded.begin() + half + width, half, row[width - 1]);
}

void convolve_rows(const QVImage& image, const double* kernel, int size, QVImage& out) {
  std::vector<std::uint8_t> padded(at(image.width) + at(size));
  std::vector<double> sums(at(image.width));
  for (int y = 0; y < image.height; ++y) {
    pad_row(row_of(image, y), image.width, size / 2, padded);
    std::fill(sums.begin(), sums.end(), 0.0);
    for (int k = 0; k < size; ++k) add_tap(padded.data() + k, kernel[k], sums);
    store_rounded(sums, out.data + std::ptrdiff_t{y} * image.width);
  }
}

void convolve_columns(const QVImage& image, const double* kernel, int size, QVImage& out) {
  const int half = size / 2;
  std::vector<double> sums(at(image.width));
  for (int y = 0; y < image.height; ++y) {
    std::fill(sums.begin(), sums.end(), 0.0);
    for (int k = -half; k <= half; ++k) {
      const int yy = std::min(std::max(y + k, 0), image.height - 1);
      add_tap(row_of(image, yy), kernel[k + half], sums);
    }
    store_rounded(sums, out.data + std::ptrdiff_t{y} * image.width);
  }
}

double direct_sum(const QVImage& image, const double* kernel, int half, int x, int y) {
  double sum = 0.0;
  for (int ky = -half; ky <= half; ++ky) {
    const std::uint8_t* row = row_of(image, myClamp(y + ky, 0, image.height - 1));
    for (int kx = -half; kx <= half; ++kx) {
      const int xx = myClamp(x + kx, 0, image.width - 1);
      sum = sum + static_cast<double>(row[xx]) * *kernel++;
    }
  }
  return sum;
}

}  // namespace

void generateGaussianKernel1D(int size, double sigma, double* kernel) {
  if (!is_kernel_size(size)) return;
  const int half = size / 2;
  const double coef = 1.0 / (static_cast<double>(my_sqrt(kTwoPiSingle)) * sigma);
  for (int i = -half; i <= half; ++i) {
    const double power = -0.5 * static_cast<double>(i * i) / (sigma * sigma);
    kernel[i + half] = coef * static_cast<double>(my_exp(static_cast<float>(power)));
  }
  scale_to_one(kernel, at(size));
}

void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel) {
  if (!is_kernel_size(size)) return;
  const int half = size / 2;
  const double coef = 1.0 / (kTwoPi * sigmaX * sigmaY);
  double* entry = kernel;
  for (int y = -half; y <= half; ++y) {
    for (int x = -half; x <= half; ++x) {
      const double power = static_cast<double>(-(x * x)) / (2.0 * sigmaX * sigmaX) -
                           static_cast<double>(y * y) / (2.0 * sigmaY * sigmaY);
      *entry++ = coef * static_cast<double>(my_exp(static_cast<float>(power)));
    }
  }
  scale_to_one(kernel, at(size) * at(size));
}

QVImage convolve1D(const QVImage& image, const double* kernel, int size, bool horizontal) {
  QVImage out(image);
  if (!is_kernel_size(size) || image.width <= 0 || image.height <= 0) return out;
  if (horizontal) {
    convolve_rows(image, kernel, size, out);
  } else {
    convolve_columns(image, kernel, size, out);
  }
  return out;
}

QVImage enh_gaussian_filter_fast(const QVImage& image, int size, double sigma) {
  if (!is_kernel_size(size)) return image;
  std::vector<double> kernel(at(size));
  generateGaussianKernel1D(size, sigma, kernel.data());
  const QVImage rows = convolve1D(image, kernel.data(), size, true);
  return convolve1D(rows, kernel.data(), size, false);
}

QVImage enh_gaussian_filter(const QVImage& image, int size, double sigmaX, double sigmaY) {
  QVImage out(image.width, image.height, QV_IMG_GRAY, image.data);
  if (!is_kernel_size(size)) return out;
  const int half = size / 2;
  std::vector<double> kernel(at(size) * at(size));
  generateGaussianKernel(size, sigmaX, sigmaY, kernel.data());
  std::uint8_t* pixel = out.data;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const double sum = direct_sum(image, kernel.data(), half, x, y);
      *pixel++ = static_cast<std::uint8_t>(my_round(static_cast<float>(sum)) & 255);
    }
  }
  return out;
}
