// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/reference/stencil.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace reference {

namespace {

constexpr float kTolerance = 1e-6F;

std::int32_t channelsOf(QV_IMG_COLOR layout) {
  if (layout == 0) return 1;
  if (layout == 1 || layout == 2) return 3;
  return 4;
}

std::uint64_t byteCount(const QVImage& image) {
  return static_cast<std::uint64_t>(std::int64_t{image.width}) *
         static_cast<std::uint64_t>(std::int64_t{image.height}) *
         static_cast<std::uint64_t>(std::int64_t{image.channels});
}

std::uint8_t* allocate(const QVImage& image) {
  const std::uint64_t bytes = byteCount(image);
  if (bytes >> 63 != 0) throw std::bad_alloc();
  return new std::uint8_t[bytes];
}

std::uint8_t lowByte(std::int32_t value) {
  return static_cast<std::uint8_t>(value & 255);
}

bool usableKernelSize(int size) {
  return size > 0 && size % 2 == 1;
}

}  // namespace

QVImage::QVImage(std::int32_t imageWidth, std::int32_t imageHeight, QV_IMG_COLOR layout,
                 const std::uint8_t* pixels)
    : QVImage(imageWidth, imageHeight, layout) {
  if (byteCount(*this) > 0) std::memcpy(data, pixels, byteCount(*this));
}

QVImage::QVImage(std::int32_t imageWidth, std::int32_t imageHeight, QV_IMG_COLOR layout)
    : width(imageWidth), height(imageHeight), channels(channelsOf(layout)), colorType(layout) {
  data = allocate(*this);
}

QVImage::QVImage(const QVImage& other)
    : width(other.width),
      height(other.height),
      channels(other.channels),
      colorType(other.colorType) {
  data = allocate(*this);
  std::memcpy(data, other.data, byteCount(*this));
}

QVImage& QVImage::operator=(const QVImage& other) {
  width = other.width;
  height = other.height;
  channels = other.channels;
  colorType = other.colorType;
  delete[] data;
  data = nullptr;
  data = allocate(*this);
  std::memcpy(data, other.data, byteCount(*this));
  return *this;
}

QVImage::~QVImage() {
  width = 0;
  height = 0;
  channels = 0;
  delete[] data;
  data = nullptr;
}

// Approximate math --------------------------------------------------------------

float myabs(float v) {
  if (0.0F > v) return -v;
  return v;
}

float my_sqrt(float v) {
  if (0.0F > v) return -1.0F;
  if (v == 0.0F) return 0.0F;
  float g = v / 2.0F;
  while (true) {
    const float quotient = v / g;
    const float sum = g + quotient;
    const float n = 0.5F * sum;
    if (kTolerance > myabs(n - g)) return g;
    g = n;
  }
}

float my_exp(float v) {
  if (0.0F > v) {
    const double r = double{my_exp(-v)};
    return static_cast<float>(1.0 / r);
  }
  float sum = 1.0F;
  float term = 1.0F;
  for (int i = 1; i <= 20; ++i) {
    const float part = v / static_cast<float>(i);
    term = part * term;
    sum = sum + term;
    if (double{term} < 1e-06) break;
  }
  return sum;
}

float my_ln(float v) {
  if (!(0.0F < v)) return -1.0F;
  float y = (v - 1.0F) / (1.0F + v);
  while (true) {
    const float difference = my_exp(y) - v;
    const float step = difference / v;
    const float n = y - step;
    if (kTolerance > myabs(n - y)) return y;
    y = n;
  }
}

float my_pow(float base, float exponent) {
  if (base == 0.0F) {
    if (exponent == 0.0F) return 1.0F;
    if (exponent > 0.0F) return 0.0F;
    return -1.0F;
  }
  if (base < 0.0F) {
    const float fraction = exponent - static_cast<float>(static_cast<std::int32_t>(exponent));
    if (!(fraction == 0.0F)) return -1.0F;
  }
  const float product = exponent * my_ln(base);
  return my_exp(product);
}

std::int32_t my_round(float v) {
  if (double{v} >= 0.0) {
    const float up = v + 0.5F;
    return static_cast<std::int32_t>(up);
  }
  const float down = v - 0.5F;
  return static_cast<std::int32_t>(down);
}

bool isWithinBounds(int x, int y, int width, int height) {
  if (x < 0 || x >= width) return false;
  return y >= 0 && y < height;
}

// Tone --------------------------------------------------------------------------

namespace {

std::uint8_t greyOf(float first, std::uint8_t a, float second, std::uint8_t b, float third,
                    std::uint8_t c) {
  float t = first * static_cast<float>(a);
  const float middle = second * static_cast<float>(b);
  t = t + middle;
  const float last = third * static_cast<float>(c);
  t = t + last;
  return lowByte(my_round(t));
}

}  // namespace

QVImage cvtGray(const QVImage& src) {
  QVImage out(src.width, src.height, QV_IMG_GRAY);
  const std::int64_t n = std::int64_t{src.width} * src.height;
  std::int64_t j = 0;
  for (std::int64_t i = 0; i < n; ++i) {
    const std::uint8_t* s = src.data + j;
    if (src.colorType == 0) {
      out.data[i] = s[0];
    } else if (src.colorType == 1 || src.colorType == 3) {
      out.data[i] = greyOf(0.114F, s[0], 0.587F, s[1], 0.299F, s[2]);
    } else {
      out.data[i] = greyOf(0.299F, s[0], 0.587F, s[1], 0.114F, s[2]);
    }
    j = j + src.channels;
  }
  return out;
}

int thresh_global_moments(const QVImage& img) {
  const int pixels = img.width * img.height;
  std::vector<int> hist(256, 0);
  for (int i = 0; i < pixels; ++i) hist[img.data[i]] = hist[img.data[i]] + 1;
  return thresh_global_moments_from_counts(hist.data(), pixels);
}

int thresh_global_moments_from_counts(const int counts[256], int pixels) {
  std::vector<float> p(256, 0.0F);
  for (std::size_t k = 0; k < 256; ++k)
    p[k] = static_cast<float>(counts[k]) / static_cast<float>(pixels);

  const float m0 = 1.0F;
  float m1 = 0.0F;
  float m2 = 0.0F;
  float m3 = 0.0F;
  for (int k = 0; k < 256; ++k) {
    const float probability = p[static_cast<std::size_t>(k)];
    const float first = static_cast<float>(k) * probability;
    m1 = m1 + first;
    const float second = static_cast<float>(k * k) * probability;
    m2 = m2 + second;
    const float third = static_cast<float>(k * k * k) * probability;
    m3 = m3 + third;
  }
  const float m0m2 = m0 * m2;
  const float m1m1 = m1 * m1;
  const float cd = m0m2 - m1m1;
  const float m1m3 = m1 * m3;
  const float m2m2 = m2 * m2;
  const float c0 = (m1m3 - m2m2) / cd;
  const float m1m2 = m1 * m2;
  const float m0m3 = m0 * m3;
  const float c1 = (m1m2 - m0m3) / cd;
  const float c1c1 = c1 * c1;
  const auto disc = static_cast<float>(double{c1c1} - 4.0 * double{c0});
  if (0.0F > disc) return 128;
  // my_sqrt would not terminate for a NaN or an infinity.
  if (!std::isfinite(disc)) return 128;
  const float z0 = 0.5F * (-c1 - my_sqrt(disc));
  const float z1 = 0.5F * (-c1 + my_sqrt(disc));
  const float p0 = (z1 - m1) / (z1 - z0);
  float cum = 0.0F;
  for (int k = 0; k < 256; ++k) {
    cum = cum + p[static_cast<std::size_t>(k)];
    if (cum > p0) return k;
  }
  return -1;
}

void enh_piecewise_gamma(QVImage& img, int knee, float gammaLow, float gammaHigh) {
  std::vector<std::uint8_t> table(256, 0);
  for (int i = 0; i < 256; ++i) {
    const auto x = static_cast<float>(i);
    float level = 0.0F;
    if (i < knee) {
      const float power = my_pow(x / static_cast<float>(knee), gammaLow);
      level = power * static_cast<float>(knee);
    } else {
      const auto span = static_cast<float>(255 - knee);
      const float power = my_pow((x - static_cast<float>(knee)) / span, gammaHigh);
      const float lifted = power * span;
      level = lifted + static_cast<float>(knee);
    }
    table[static_cast<std::size_t>(i)] = lowByte(static_cast<std::int32_t>(level));
  }
  const std::int64_t n = std::int64_t{img.width} * img.height;
  for (std::int64_t i = 0; i < n; ++i) img.data[i] = table[img.data[i]];
}

// Smoothing ---------------------------------------------------------------------

void generateGaussianKernel1D(int size, double sigma, double* kernel) {
  if (!usableKernelSize(size)) return;
  const int half = size / 2;
  const float twoPi = 6.2831854820251465F;
  const double coef = 1.0 / (double{my_sqrt(twoPi)} * sigma);
  for (int i = -half; i <= half; ++i) {
    const double exponent = -0.5 * static_cast<double>(i * i) / (sigma * sigma);
    kernel[i + half] = coef * double{my_exp(static_cast<float>(exponent))};
  }
  double sum = kernel[0];
  for (int j = 1; j < size; ++j) sum = sum + kernel[j];
  for (int j = 0; j < size; ++j) kernel[j] = kernel[j] / sum;
}

void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* kernel) {
  if (!usableKernelSize(size)) return;
  const int half = size / 2;
  const double twoPi = 6.283185307179586;
  const double coef = 1.0 / (twoPi * sigmaX * sigmaY);
  for (int y = -half; y <= half; ++y) {
    for (int x = -half; x <= half; ++x) {
      const double alongX = static_cast<double>(-(x * x)) / (2.0 * sigmaX * sigmaX);
      const double alongY = static_cast<double>(y * y) / (2.0 * sigmaY * sigmaY);
      const double e = alongX - alongY;
      kernel[(y + half) * size + (x + half)] = coef * double{my_exp(static_cast<float>(e))};
    }
  }
  double sum = 0.0;
  for (int j = 0; j < size * size; ++j) sum = sum + kernel[j];
  for (int j = 0; j < size * size; ++j) kernel[j] = kernel[j] / sum;
}

QVImage convolve1D(const QVImage& src, const double* kernel, int size, bool horizontal) {
  QVImage out(src);
  if (!usableKernelSize(size)) return out;
  const int half = size / 2;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      double acc = 0.0;
      for (int k = -half; k <= half; ++k) {
        const int xx = horizontal ? std::min(std::max(x + k, 0), src.width - 1) : x;
        const int yy = horizontal ? y : std::min(std::max(y + k, 0), src.height - 1);
        const auto value = static_cast<double>(src.data[std::int64_t{yy} * src.width + xx]);
        const double product = value * kernel[k + half];
        acc = acc + product;
      }
      out.data[std::int64_t{y} * src.width + x] = lowByte(my_round(static_cast<float>(acc)));
    }
  }
  return out;
}

QVImage enh_gaussian_filter_fast(const QVImage& src, int size, double sigma) {
  if (!usableKernelSize(size)) return QVImage(src);
  std::vector<double> kernel(static_cast<std::size_t>(size));
  generateGaussianKernel1D(size, sigma, kernel.data());
  const QVImage tmp = convolve1D(src, kernel.data(), size, true);
  return convolve1D(tmp, kernel.data(), size, false);
}

QVImage enh_gaussian_filter(const QVImage& src, int size, double sigmaX, double sigmaY) {
  if (!usableKernelSize(size)) return QVImage(src);
  const int half = size / 2;
  QVImage out(src.width, src.height, QV_IMG_GRAY);
  std::vector<double> kernel(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
  generateGaussianKernel(size, sigmaX, sigmaY, kernel.data());
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      double acc = 0.0;
      for (int ky = -half; ky <= half; ++ky) {
        for (int kx = -half; kx <= half; ++kx) {
          const int xx = myClamp(x + kx, 0, src.width - 1);
          const int yy = myClamp(y + ky, 0, src.height - 1);
          const auto value = static_cast<double>(src.data[std::int64_t{yy} * src.width + xx]);
          const double product =
              value * kernel[static_cast<std::size_t>((ky + half) * size + (kx + half))];
          acc = acc + product;
        }
      }
      out.data[std::int64_t{y} * src.width + x] = lowByte(my_round(static_cast<float>(acc)));
    }
  }
  return out;
}

QVImage add_Weighted(const QVImage& src, const QVImage& blurred, float weight) {
  QVImage out(src);
  const std::int64_t n = std::int64_t{src.width} * src.height;
  for (std::int64_t i = 0; i < n; ++i) {
    const float own = static_cast<float>(src.data[i]) * (1.0F + weight);
    const float other = static_cast<float>(blurred.data[i]) * (-weight);
    float t = own + other;
    t = t + 0.0F;
    out.data[i] = static_cast<std::uint8_t>(myClamp(my_round(t), 0, 255));
  }
  return out;
}

QVImage enh_unsharp_mask(const QVImage& src, float amount, int size) {
  const float weight = amount / 100.0F;
  const QVImage blurred = enh_gaussian_filter_fast(src, size, 3.0);
  return add_Weighted(src, blurred, weight);
}

// Halftone ------------------------------------------------------------------------

QVImage edf_cus(const QVImage& src, int threshold) {
  struct Target {
    int dx;
    int dy;
    float weight;
  };
  const Target kernel[6] = {{1, 0, 0.505786F},  {2, 0, -0.052926F}, {-2, 1, 0.226194F},
                            {-1, 1, 0.128835F}, {0, 1, 0.243191F},  {1, 1, -0.111078F}};
  const int width = src.width;
  const int height = src.height;
  QVImage out(width, height, QV_IMG_GRAY);
  std::vector<std::vector<float>> err(static_cast<std::size_t>(height),
                                      std::vector<float>(static_cast<std::size_t>(width), 0.0F));
  std::int64_t i = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, ++i) {
      const float v = err[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] +
                      static_cast<float>(src.data[i]);
      float e = v;
      if (v > static_cast<float>(threshold)) {
        out.data[i] = 255;
        if (y >= 1 && x >= 1 && y < height - 1 && x < width - 1) {
          float s = 0.0F;
          if (out.data[i - 1] == 0) s = s + 0.1427F;
          if (out.data[i - width] == 0) s = s + 0.1427F;
          const float keep = 1.0F - s;
          const float charged = 255.0F * keep;
          e = v - charged;
        } else {
          e = v - 255.0F;
        }
      } else {
        out.data[i] = 0;
      }
      float products[6];
      for (int k = 0; k < 6; ++k) products[k] = e * kernel[k].weight;
      for (int k = 0; k < 6; ++k) {
        const int tx = x + kernel[k].dx;
        const int ty = y + kernel[k].dy;
        if (!isWithinBounds(tx, ty, width, height)) continue;
        float& target = err[static_cast<std::size_t>(ty)][static_cast<std::size_t>(tx)];
        target = target + products[k];
      }
    }
  }
  return out;
}

QVImage qvTattooDithering(QVImage& source) {
  QVImage grey = cvtGray(source);
  const int threshold = thresh_global_moments(grey);
  enh_piecewise_gamma(grey, 64, 0.85F, 0.7F);
  const QVImage sharp = enh_unsharp_mask(grey, 300.0F, 11);
  return edf_cus(sharp, threshold);
}

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

}  // namespace reference
