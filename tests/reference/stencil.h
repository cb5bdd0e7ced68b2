// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil enhancement in its plainest form: whole-page buffers, coordinates
// clamped tap by tap, one operation per written step. Single precision is part
// of every result, so nothing here may be reordered, widened or fused.

#ifndef WREN_TESTS_REFERENCE_STENCIL_H_
#define WREN_TESTS_REFERENCE_STENCIL_H_

#include <cstdint>

namespace reference {

/// Pixel layouts. The value fixes the bytes per pixel and the order of the colours.
enum QV_IMG_COLOR : int32_t {
  QV_IMG_GRAY = 0,
  QV_IMG_BGR = 1,
  QV_IMG_RGB = 2,
  QV_IMG_BGRA = 3,
  QV_IMG_RGBA = 4,
};

/// An image that owns width x height x channels bytes, rows without padding.
class QVImage {
 public:
  QVImage(int32_t imageWidth, int32_t imageHeight, QV_IMG_COLOR layout, const uint8_t* pixels);
  QVImage(int32_t imageWidth, int32_t imageHeight, QV_IMG_COLOR layout);
  QVImage(const QVImage& other);
  QVImage& operator=(const QVImage& other);
  ~QVImage();

  int32_t width = 0;
  int32_t height = 0;
  int32_t channels = 4;
  QV_IMG_COLOR colorType = QV_IMG_BGR;
  uint8_t* data = nullptr;
};

// Approximate math. None of these may be called with a NaN or an infinity.
float myabs(float v);
float my_sqrt(float v);
float my_exp(float v);
float my_ln(float v);
float my_pow(float base, float exponent);
int32_t my_round(float v);

template <typename T>
T myClamp(T v, T lo, T hi) {
  if (v < lo) return lo;
  return v < hi ? v : hi;
}

bool isWithinBounds(int x, int y, int width, int height);

// Tone.
QVImage cvtGray(const QVImage& src);
int thresh_global_moments(const QVImage& img);
/// The threshold of a page of which only the counts of its 256 levels are known.
int thresh_global_moments_from_counts(const int counts[256], int pixels);
void enh_piecewise_gamma(QVImage& img, int knee, float gammaLow, float gammaHigh);

// Smoothing. A size that is even or not positive leaves the kernel as it was, and the filters
// return a copy of the image.
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

#endif  // WREN_TESTS_REFERENCE_STENCIL_H_
