// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone.h"

#include <cstddef>
#include <cstring>
#include <limits>

#include "stencil/fast_math.h"

namespace {

std::size_t pixel_count(const QVImage& image) {
  return static_cast<std::size_t>(std::int64_t{image.width} * image.height);
}

// The products are added in the order of the bytes; another order rounds differently.
std::uint8_t weighted_grey(const std::uint8_t* pixel, float first, float second, float third) {
  float t = first * static_cast<float>(pixel[0]);
  t = t + second * static_cast<float>(pixel[1]);
  t = t + third * static_cast<float>(pixel[2]);
  return static_cast<std::uint8_t>(my_round(t) & 255);
}

void copy_grey(const QVImage& source, QVImage& out) {
  const std::uint8_t* pixel = source.data;
  const std::size_t n = pixel_count(source);
  for (std::size_t i = 0; i < n; ++i, pixel += source.channels) out.data[i] = *pixel;
}

void weigh_colours(const QVImage& source, QVImage& out, float first, float third) {
  const std::uint8_t* pixel = source.data;
  const std::size_t n = pixel_count(source);
  for (std::size_t i = 0; i < n; ++i, pixel += source.channels) {
    out.data[i] = weighted_grey(pixel, first, kGreenWeight, third);
  }
}

using GreyShares = std::array<float, 256>;

GreyShares shares_of(const GreyCounts& counts) {
  std::int32_t total = 0;
  for (const std::int32_t count : counts) total += count;
  GreyShares shares{};
  for (std::size_t k = 0; k < counts.size(); ++k) {
    shares[k] = static_cast<float>(counts[k]) / static_cast<float>(total);
  }
  return shares;
}

struct Moments {
  float m0 = 1.0F;
  float m1 = 0.0F;
  float m2 = 0.0F;
  float m3 = 0.0F;
};

Moments moments_of(const GreyShares& shares) {
  Moments m;
  for (int k = 0; k < 256; ++k) {
    const float share = shares[static_cast<std::size_t>(k)];
    m.m1 = m.m1 + static_cast<float>(k) * share;
    m.m2 = m.m2 + static_cast<float>(k * k) * share;
    m.m3 = m.m3 + static_cast<float>(k * k * k) * share;
  }
  return m;
}

// The first level at which the share of the levels up to it exceeds `dark`.
int level_above(const GreyShares& shares, float dark) {
  float cumulative = 0.0F;
  for (int k = 0; k < 256; ++k) {
    cumulative = cumulative + shares[static_cast<std::size_t>(k)];
    if (cumulative > dark) return k;
  }
  return -1;
}

}  // namespace

QVImage cvtGray(const QVImage& source) {
  QVImage out(source.width, source.height, QV_IMG_GRAY);
  if (source.colorType == QV_IMG_GRAY) {
    copy_grey(source, out);
  } else if (source.colorType == QV_IMG_BGR || source.colorType == QV_IMG_BGRA) {
    weigh_colours(source, out, kBlueWeight, kRedWeight);
  } else {
    weigh_colours(source, out, kRedWeight, kBlueWeight);
  }
  return out;
}

GreyCounts count_levels(const QVImage& grey) {
  GreyCounts counts{};
  const std::size_t n = pixel_count(grey);
  for (std::size_t i = 0; i < n; ++i) ++counts[grey.data[i]];
  return counts;
}

int thresh_global_moments(const QVImage& grey) {
  return threshold_of_counts(count_levels(grey));
}

// On a page of two levels the last bit of every step decides the result: nothing
// here may be reordered, widened or simplified.
int threshold_of_counts(const GreyCounts& counts) {
  const GreyShares shares = shares_of(counts);
  const auto [m0, m1, m2, m3] = moments_of(shares);
  const float cd = m0 * m2 - m1 * m1;
  const float c0 = (m1 * m3 - m2 * m2) / cd;
  const float c1 = (m1 * m2 - m0 * m3) / cd;
  const float square = c1 * c1;
  const auto disc = static_cast<float>(static_cast<double>(square) - 4.0 * static_cast<double>(c0));
  if (0.0F > disc) return kFallbackThreshold;
  // A page of one level gives NaN and a nearly single-level one can give an
  // infinity; the square root would never end on either.
  if (!(disc <= std::numeric_limits<float>::max())) return kFallbackThreshold;
  const float z0 = 0.5F * (-c1 - my_sqrt(disc));
  const float z1 = 0.5F * (-c1 + my_sqrt(disc));
  return level_above(shares, (z1 - m1) / (z1 - z0));
}

GreyTable piecewise_gamma_table(int knee, float gammaLow, float gammaHigh) {
  GreyTable table{};
  const auto below = static_cast<float>(knee);
  const auto above = static_cast<float>(255 - knee);
  for (int i = 0; i < 256; ++i) {
    const auto x = static_cast<float>(i);
    const float level = i < knee ? my_pow(x / below, gammaLow) * below
                                 : my_pow((x - below) / above, gammaHigh) * above + below;
    table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(static_cast<int>(level) & 255);
  }
  return table;
}

void enh_piecewise_gamma(QVImage& grey, int knee, float gammaLow, float gammaHigh) {
  const GreyTable table = piecewise_gamma_table(knee, gammaLow, gammaHigh);
  const std::size_t n = pixel_count(grey);
  for (std::size_t i = 0; i < n; ++i) grey.data[i] = table[grey.data[i]];
}
