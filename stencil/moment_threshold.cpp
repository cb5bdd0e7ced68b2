// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/moment_threshold.h"

#include <array>
#include <cstddef>
#include <limits>

#include "stencil/fast_math.h"
#include "stencil/recipe.h"

namespace wren::stencil {
namespace {

using Probabilities = std::array<float, 256>;

Probabilities probabilitiesOf(const Histogram& histogram) {
  std::int32_t pixels = 0;
  for (const std::int32_t count : histogram) pixels += count;
  Probabilities p{};
  for (std::size_t k = 0; k < p.size(); ++k) {
    p[k] = static_cast<float>(histogram[k]) / static_cast<float>(pixels);
  }
  return p;
}

struct Moments {
  float m0 = 1.0F;
  float m1 = 0.0F;
  float m2 = 0.0F;
  float m3 = 0.0F;
};

Moments momentsOf(const Probabilities& p) {
  Moments m;
  for (int k = 0; k < 256; ++k) {
    const float probability = p[static_cast<std::size_t>(k)];
    m.m1 = m.m1 + static_cast<float>(k) * probability;
    m.m2 = m.m2 + static_cast<float>(k * k) * probability;
    m.m3 = m.m3 + static_cast<float>(k * k * k) * probability;
  }
  return m;
}

// The first level at which the cumulative probability exceeds `dark`.
int levelAbove(const Probabilities& p, float dark) {
  float cumulative = 0.0F;
  for (int k = 0; k < 256; ++k) {
    cumulative = cumulative + p[static_cast<std::size_t>(k)];
    if (cumulative > dark) return k;
  }
  return -1;
}

}  // namespace

// On a page of two levels the last bit of every step decides the result: nothing
// here may be reordered, widened or simplified.
int momentThreshold(const Histogram& histogram) {
  const Probabilities p = probabilitiesOf(histogram);
  const auto [m0, m1, m2, m3] = momentsOf(p);
  const float cd = m0 * m2 - m1 * m1;
  const float c0 = (m1 * m3 - m2 * m2) / cd;
  const float c1 = (m1 * m2 - m0 * m3) / cd;
  const float square = c1 * c1;
  const auto disc = static_cast<float>(static_cast<double>(square) - 4.0 * static_cast<double>(c0));
  if (0.0F > disc) return kFallbackThreshold;
  // A page of one level gives NaN, and a page that nearly is one can give infinity.
  // `my_sqrt` would not return for either.
  if (!(disc <= std::numeric_limits<float>::max())) return kFallbackThreshold;
  const float z0 = 0.5F * (-c1 - my_sqrt(disc));
  const float z1 = 0.5F * (-c1 + my_sqrt(disc));
  return levelAbove(p, (z1 - m1) / (z1 - z0));
}

}  // namespace wren::stencil
