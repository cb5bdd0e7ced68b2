// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reference implementation of the stencil method: whole-page buffers, coordinates clamped at every
// tap, one operation per written step. Results depend on single precision: nothing may be
// reordered, widened or fused.

#pragma once

#include <cstdint>

namespace reference {

/// Pixel layouts: bytes per pixel and order of the colours.
enum QV_IMG_COLOR : std::int32_t {
  QV_IMG_GRAY = 0,
  QV_IMG_BGR = 1,
  QV_IMG_RGB = 2,
  QV_IMG_BGRA = 3,
  QV_IMG_RGBA = 4,
};

/// An image that owns width * height * channels bytes, rows without padding.
class QVImage {
 public:
  QVImage(std::int32_t imageWidth, std::int32_t imageHeight, QV_IMG_COLOR layout,
          const std::uint8_t* pixels);
  QVImage(std::int32_t imageWidth, std::int32_t imageHeight, QV_IMG_COLOR layout);
  QVImage(const QVImage& other);
  QVImage& operator=(const QVImage& other);
  ~QVImage();

  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t channels = 4;
  QV_IMG_COLOR colorType = QV_IMG_BGR;
  std::uint8_t* data = nullptr;
};

// Approximate math. Precondition: no NaN, no infinity.
float myabs(float v);
float my_sqrt(float v);
float my_exp(float v);
float my_ln(float v);
float my_pow(float base, float exponent);
std::int32_t my_round(float v);

template <typename T>
T myClamp(T v, T lo, T hi) {
  if (v < lo) return lo;
  return v < hi ? v : hi;
}

bool isWithinBounds(int x, int y, int width, int height);

// Tone.
QVImage cvtGray(const QVImage& src);
int thresh_global_moments(const QVImage& img);
/// The threshold of a page with this histogram.
int thresh_global_moments_from_counts(const int counts[256], int pixels);
void enh_piecewise_gamma(QVImage& img, int knee, float gammaLow, float gammaHigh);

// Smoothing. An even or non-positive size leaves the kernel unchanged, and the filters return a
// copy of the image.
void generateGaussianKernel1D(int size, double sigma, double* kernel);
void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel);
QVImage convolve1D(const QVImage& src, const double* kernel, int size, bool horizontal);
QVImage enh_gaussian_filter_fast(const QVImage& src, int size, double sigma);
QVImage enh_gaussian_filter(const QVImage& src, int size, double sigmaX, double sigmaY);
QVImage add_Weighted(const QVImage& src, const QVImage& blurred, float weight);
QVImage enh_unsharp_mask(const QVImage& src, float amount, int size);

// Halftone.
QVImage edf_cus(const QVImage& src, int threshold);
QVImage qvTattooDithering(QVImage& source);

}  // namespace reference
