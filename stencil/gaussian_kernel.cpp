// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian_kernel.h"

#include "stencil/fast_math.h"

namespace {

// Printed pages depend on which generator has which precision.
constexpr float kTwoPiSingle = 6.2831853071795864769F;
constexpr double kTwoPi = 6.283185307179586;

void scaleToOne(double* kernel, int entries) {
  double sum = 0.0;
  for (int j = 0; j < entries; ++j) sum = sum + kernel[j];
  for (int j = 0; j < entries; ++j) kernel[j] = kernel[j] / sum;
}

}  // namespace

void generateGaussianKernel1D(int size, double sigma, double* kernel) {
  if (!wren::stencil::isKernelSize(size)) return;
  const int half = size / 2;
  const double coef = 1.0 / (static_cast<double>(my_sqrt(kTwoPiSingle)) * sigma);
  for (int i = -half; i <= half; ++i) {
    const double power = -0.5 * static_cast<double>(i * i) / (sigma * sigma);
    kernel[i + half] = coef * static_cast<double>(my_exp(static_cast<float>(power)));
  }
  scaleToOne(kernel, size);
}

void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel) {
  if (!wren::stencil::isKernelSize(size)) return;
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
  scaleToOne(kernel, size * size);
}
