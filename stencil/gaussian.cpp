// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "stencil/fast_math.h"
#include "stencil/gaussian_kernel.h"

namespace {

using wren::stencil::isKernelSize;

std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}

const std::uint8_t* rowOf(const QVImage& image, int y) {
  return image.data + static_cast<std::ptrdiff_t>(y) * image.width;
}

// The loop over x is the inner one, so the compiler vectorises it, and each pixel still
// adds its taps in order.
void addTap(const std::uint8_t* row, double weight, std::vector<double>& sums) {
  for (std::size_t x = 0; x < sums.size(); ++x) {
    sums[x] = sums[x] + static_cast<double>(row[x]) * weight;
  }
}

void storeRounded(const std::vector<double>& sums, std::uint8_t* out) {
  for (std::size_t x = 0; x < sums.size(); ++x) {
    out[x] = static_cast<std::uint8_t>(my_round(static_cast<float>(sums[x])) & 255);
  }
}

// Copies a row and repeats its first and last pixel `half` times beyond the ends.
void padRow(const std::uint8_t* row, int width, int half, std::vector<std::uint8_t>& padded) {
  std::fill_n(padded.begin(), half, row[0]);
  std::copy_n(row, width, padded.begin() + half);
  std::fill_n(padded.begin() + half + width, half, row[width - 1]);
}

void convolveRows(const QVImage& image, const double* kernel, int size, QVImage& out) {
  std::vector<std::uint8_t> padded(at(image.width) + at(size));
  std::vector<double> sums(at(image.width));
  for (int y = 0; y < image.height; ++y) {
    padRow(rowOf(image, y), image.width, size / 2, padded);
    std::fill(sums.begin(), sums.end(), 0.0);
    for (int k = 0; k < size; ++k) addTap(padded.data() + k, kernel[k], sums);
    storeRounded(sums, out.data + std::ptrdiff_t{y} * image.width);
  }
}

void convolveColumns(const QVImage& image, const double* kernel, int size, QVImage& out) {
  const int half = size / 2;
  std::vector<double> sums(at(image.width));
  for (int y = 0; y < image.height; ++y) {
    std::fill(sums.begin(), sums.end(), 0.0);
    for (int k = -half; k <= half; ++k) {
      const int yy = std::min(std::max(y + k, 0), image.height - 1);
      addTap(rowOf(image, yy), kernel[k + half], sums);
    }
    storeRounded(sums, out.data + std::ptrdiff_t{y} * image.width);
  }
}

double directSum(const QVImage& image, const double* kernel, int half, int x, int y) {
  double sum = 0.0;
  for (int ky = -half; ky <= half; ++ky) {
    const std::uint8_t* row = rowOf(image, myClamp(y + ky, 0, image.height - 1));
    for (int kx = -half; kx <= half; ++kx) {
      const int xx = myClamp(x + kx, 0, image.width - 1);
      sum = sum + static_cast<double>(row[xx]) * *kernel++;
    }
  }
  return sum;
}

}  // namespace

QVImage convolve1D(const QVImage& image, const double* kernel, int size, bool horizontal) {
  QVImage out(image);
  if (!isKernelSize(size) || image.width <= 0 || image.height <= 0) return out;
  if (horizontal) {
    convolveRows(image, kernel, size, out);
  } else {
    convolveColumns(image, kernel, size, out);
  }
  return out;
}

QVImage enh_gaussian_filter_fast(const QVImage& image, int size, double sigma) {
  if (!isKernelSize(size)) return image;
  std::vector<double> kernel(at(size));
  generateGaussianKernel1D(size, sigma, kernel.data());
  const QVImage rows = convolve1D(image, kernel.data(), size, true);
  return convolve1D(rows, kernel.data(), size, false);
}

QVImage enh_gaussian_filter(const QVImage& image, int size, double sigmaX, double sigmaY) {
  QVImage out(image.width, image.height, QV_IMG_GRAY, image.data);
  if (!isKernelSize(size)) return out;
  const int half = size / 2;
  std::vector<double> kernel(at(size) * at(size));
  generateGaussianKernel(size, sigmaX, sigmaY, kernel.data());
  std::uint8_t* pixel = out.data;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const double sum = directSum(image, kernel.data(), half, x, y);
      *pixel++ = static_cast<std::uint8_t>(my_round(static_cast<float>(sum)) & 255);
    }
  }
  return out;
}
