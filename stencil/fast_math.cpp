// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/fast_math.h"

namespace {

// Two successive estimates closer than this end an iteration. Printed output depends on this
// tolerance.
constexpr float kTolerance = 1e-6F;

constexpr int kTaylorTerms = 20;
constexpr double kSmallestTerm = 1e-06;

float taylorExp(float v) {
  float sum = 1.0F;
  float term = 1.0F;
  for (int i = 1; i <= kTaylorTerms; ++i) {
    term = (v / static_cast<float>(i)) * term;
    sum = sum + term;
    if (static_cast<double>(term) < kSmallestTerm) break;
  }
  return sum;
}

// NaN counts as fractional: converting it to an int is undefined.
bool hasFraction(float v) {
  if (v != v) return true;
  return v - static_cast<float>(static_cast<int>(v)) != 0.0F;
}

float powerOfZero(float exponent) {
  if (exponent == 0.0F) return 1.0F;
  return exponent > 0.0F ? 0.0F : -1.0F;
}

}  // namespace

float my_sqrt(float v) {
  if (0.0F > v) return -1.0F;
  if (v == 0.0F) return 0.0F;
  float g = v / 2.0F;
  for (;;) {
    const float n = 0.5F * (g + v / g);
    if (kTolerance > myabs(n - g)) return g;
    g = n;
  }
}

float my_exp(float v) {
  if (0.0F > v) return static_cast<float>(1.0 / static_cast<double>(taylorExp(-v)));
  return taylorExp(v);
}

float my_ln(float v) {
  if (!(0.0F < v)) return -1.0F;
  float y = (v - 1.0F) / (1.0F + v);
  for (;;) {
    const float n = y - (my_exp(y) - v) / v;
    if (kTolerance > myabs(n - y)) return y;
    y = n;
  }
}

float my_pow(float base, float exponent) {
  if (base == 0.0F) return powerOfZero(exponent);
  if (base < 0.0F && hasFraction(exponent)) return -1.0F;
  return my_exp(exponent * my_ln(base));
}
