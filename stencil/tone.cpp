// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone.h"

#include <cstddef>

#include "stencil/fast_math.h"
#include "stencil/histogram.h"
#include "stencil/moment_threshold.h"
#include "stencil/recipe.h"
#include "stencil/tone_curve.h"

namespace {

using namespace wren::stencil;

std::int64_t pixelCount(const QVImage& image) {
  return std::int64_t{image.width} * image.height;
}

// The products are added in the order of the bytes; another order rounds differently.
std::uint8_t weightedGrey(const std::uint8_t* pixel, float first, float second, float third) {
  float t = first * static_cast<float>(pixel[0]);
  t = t + second * static_cast<float>(pixel[1]);
  t = t + third * static_cast<float>(pixel[2]);
  return static_cast<std::uint8_t>(my_round(t) & 255);
}

void copyGrey(const QVImage& source, QVImage& out) {
  const std::uint8_t* pixel = source.data;
  const std::int64_t n = pixelCount(source);
  for (std::int64_t i = 0; i < n; ++i, pixel += source.channels) out.data[i] = *pixel;
}

void weighColours(const QVImage& source, QVImage& out, float first, float third) {
  const std::uint8_t* pixel = source.data;
  const std::int64_t n = pixelCount(source);
  for (std::int64_t i = 0; i < n; ++i, pixel += source.channels) {
    out.data[i] = weightedGrey(pixel, first, kGreenWeight, third);
  }
}

}  // namespace

QVImage cvtGray(const QVImage& source) {
  QVImage out(source.width, source.height, QV_IMG_GRAY);
  if (source.colorType == QV_IMG_GRAY) {
    copyGrey(source, out);
  } else if (source.colorType == QV_IMG_BGR || source.colorType == QV_IMG_BGRA) {
    weighColours(source, out, kBlueWeight, kRedWeight);
  } else {
    weighColours(source, out, kRedWeight, kBlueWeight);
  }
  return out;
}

int thresh_global_moments(const QVImage& grey) {
  HistogramBuilder builder;
  builder.add(grey.data, static_cast<int>(pixelCount(grey)));
  return momentThreshold(builder.histogram());
}

void enh_piecewise_gamma(QVImage& grey, int knee, float gammaLow, float gammaHigh) {
  const ToneCurve curve = piecewiseGamma(knee, gammaLow, gammaHigh);
  const std::int64_t n = pixelCount(grey);
  for (std::int64_t i = 0; i < n; ++i) grey.data[i] = curve[grey.data[i]];
}
