// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The approximate mathematics of the stencil halftone: short series and fixed
// tolerances in single precision. The tone curve, the Gaussian and the threshold
// are built from it, so printed pages depend on every bit. Do not replace a
// function by that of the standard library, and do not make one more exact.

#pragma once

#include <cfloat>

// Wider intermediate results (x87) would change pages.
static_assert(FLT_EVAL_METHOD == 0);

/// The absolute value; -0 and NaN are returned unchanged.
inline float myabs(float v) {
  return 0.0F > v ? -v : v;
}

/// Square root by Newton's iteration from `v / 2`. Returns the estimate before the
/// last step, or -1 for a negative `v`.
///
/// Precondition: `v` is not NaN, not +infinity and not the smallest denormal; the
/// iteration does not end for them.
float my_sqrt(float v);

/// e to the power `v` by at most 20 terms of the Taylor series; `1.0 / my_exp(-v)`
/// below zero. There is no range reduction: results for large |v| are too small (too
/// large below zero).
float my_exp(float v);

/// Natural logarithm by a fixed-point iteration whose correction divides by `v`.
/// Returns the estimate before the last step, or -1 for `v <= 0` and for NaN.
///
/// Precondition: `v` is at most 7.7e6; some larger arguments and +infinity never
/// converge. A small `v` takes about 0.37 / v steps.
float my_ln(float v);

/// `base` to the power `exponent` as `my_exp(exponent * my_ln(base))`.
/// A base of 0 gives 1, 0 or -1 for an exponent equal to, above or below 0 (NaN: -1).
/// A negative base gives -1 for a fractional exponent; for a whole one the -1 of the
/// logarithm is multiplied as it is.
///
/// Precondition: with a negative base the exponent fits in 32 bits or is NaN; a
/// positive base is in the domain of `my_ln`.
float my_pow(float base, float exponent);

/// The nearest integer, halves away from zero. The half is added in single
/// precision, so 0.49999997 gives 1.
///
/// Precondition: the result fits in an int.
inline int my_round(float v) {
  if (static_cast<double>(v) >= 0.0) return static_cast<int>(v + 0.5F);
  return static_cast<int>(v - 0.5F);
}

/// `lo` when `v < lo`; otherwise `v` when `v < hi`, else `hi`.
template <typename T>
constexpr T myClamp(T v, T lo, T hi) {
  if (v < lo) return lo;
  return v < hi ? v : hi;
}

/// True when 0 <= x < width and 0 <= y < height.
constexpr bool isWithinBounds(int x, int y, int width, int height) {
  if (x < 0 || x >= width) return false;
  return y >= 0 && y < height;
}
