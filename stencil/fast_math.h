// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The approximate mathematics of the stencil halftone: short series and fixed
// tolerances in single precision. A gamma table, a Gaussian kernel and a
// threshold are built from them, so printed pages depend on every last bit:
// none of them may be replaced by, or "improved" towards, the standard library.

#pragma once

#include <cfloat>

// Wider intermediates (the old x87 unit) would change results.
static_assert(FLT_EVAL_METHOD == 0);

/// Two successive estimates closer than this end an iteration.
inline constexpr float kIterationTolerance = 1e-6F;

/// Minus v when v is below zero, else v itself: -0 and not-a-number come back as they are.
inline float myabs(float v) {
  return 0.0F > v ? -v : v;
}

/// Square root by Newton's iteration, starting at v / 2; returns the estimate
/// before the last step. -1 for a negative v.
///
/// Precondition: v is not NaN, not +infinity and not the smallest denormal; the
/// iteration does not end for them.
float my_sqrt(float v);

/// e to the power v by at most 20 terms of the Taylor series, 1.0 / my_exp(-v) below zero.
/// Without range reduction: results for large |v| are too small (too large below zero).
float my_exp(float v);

/// Natural logarithm by a fixed-point iteration whose correction divides by v;
/// returns the estimate before the last step. -1 for v <= 0 and for NaN.
///
/// Precondition: v is at most 7.7e6 (some larger arguments and +infinity never
/// converge). For a tiny v it takes about 0.37 / v steps.
float my_ln(float v);

/// base to the power exponent as my_exp(exponent * my_ln(base)).
/// A base of 0 gives 1, 0 or -1 for an exponent equal to, above or below 0 (NaN: -1).
/// A negative base gives -1 for a fractional exponent; for a whole one the
/// logarithm's -1 goes into the product.
///
/// Precondition: with a negative base the exponent fits in 32 bits (or is NaN);
/// a positive base is inside the domain of my_ln.
float my_pow(float base, float exponent);

/// The nearest integer, halves away from zero. The half is added in single
/// precision, so 0.49999997 gives 1.
///
/// Precondition: the result fits in an int.
inline int my_round(float v) {
  if (static_cast<double>(v) >= 0.0) return static_cast<int>(v + 0.5F);
  return static_cast<int>(v - 0.5F);
}

/// lo when v < lo; otherwise v when v < hi, else hi.
template <typename T>
constexpr T myClamp(T v, T lo, T hi) {
  if (v < lo) return lo;
  return v < hi ? v : hi;
}

/// True exactly when 0 <= x < width and 0 <= y < height.
constexpr bool isWithinBounds(int x, int y, int width, int height) {
  if (x < 0 || x >= width) return false;
  return y >= 0 && y < height;
}
