// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The halftone methods and their tables: one row of `kMethods` says what a method number
// is. To add a method, add its table and its row here, and the method to tests/reference/;
// the kernels and their tests follow the rows.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wren::dither {

// Error diffusion.

/// How far a kernel spreads an error: columns to either side, and rows down.
inline constexpr int kMaxReachColumns = 3;
inline constexpr int kMaxReachRows = 3;

/// Error diffusion weights, written as they are drawn in the literature: the columns are
/// dx = -3 to 3, the rows dy = 0 to 3, and the pixel that makes the error is in the middle
/// of the first row. A neighbour gets weight/divisor of the error.
struct DiffusionKernel {
  int divisor;
  std::array<std::array<int, 2 * kMaxReachColumns + 1>, kMaxReachRows + 1> weights;
};

/// D. Burkes, 1988.
inline constexpr DiffusionKernel kBurkes = {
    32,
    {{
        {0, 0, 0, 0, 8, 4, 0},
        {0, 2, 4, 8, 4, 2, 0},
    }},
};

/// P. Stucki, 1981.
inline constexpr DiffusionKernel kStucki = {
    42,
    {{
        {0, 0, 0, 0, 8, 4, 0},
        {0, 2, 4, 8, 4, 2, 0},
        {0, 1, 2, 4, 2, 1, 0},
    }},
};

/// J. F. Jarvis, C. N. Judice and W. H. Ninke, 1976.
inline constexpr DiffusionKernel kJarvisJudiceNinke = {
    48,
    {{
        {0, 0, 0, 0, 7, 5, 0},
        {0, 3, 5, 7, 5, 3, 0},
        {0, 1, 3, 5, 3, 1, 0},
    }},
};

/// F. Sierra, 1989.
inline constexpr DiffusionKernel kSierra = {
    32,
    {{
        {0, 0, 0, 0, 5, 3, 0},
        {0, 2, 4, 5, 4, 2, 0},
        {0, 0, 2, 3, 2, 0, 0},
    }},
};

/// R. L. Stevenson and G. R. Arce, 1985. The only kernel without a weight for the next
/// pixel, and the only one that reaches three rows down.
inline constexpr DiffusionKernel kStevensonArce = {
    200,
    {{
        {0, 0, 0, 0, 0, 32, 0},
        {12, 0, 26, 0, 30, 0, 16},
        {0, 12, 0, 26, 0, 12, 0},
        {5, 0, 12, 0, 12, 0, 5},
    }},
};

/// R. W. Floyd and L. Steinberg, 1976.
inline constexpr DiffusionKernel kFloydSteinberg = {
    16,
    {{
        {0, 0, 0, 0, 7, 0, 0},
        {0, 0, 3, 5, 1, 0, 0},
    }},
};

/// One weight of a kernel and the neighbour it belongs to.
struct DiffusionTap {
  int dx;
  int dy;
  int weight;
};

inline constexpr std::size_t kMaxTaps = 12;

/// The weights other than 0, in the order in which they are applied: row by row, from left
/// to right. Each addition clamps, so that another order prints other dots.
struct DiffusionTaps {
  std::size_t count = 0;
  std::array<DiffusionTap, kMaxTaps> tap = {};
};

constexpr DiffusionTaps tapsOf(const DiffusionKernel& kernel) {
  DiffusionTaps taps;
  for (int dy = 0; dy <= kMaxReachRows; ++dy) {
    for (int dx = -kMaxReachColumns; dx <= kMaxReachColumns; ++dx) {
      const auto& row = kernel.weights[static_cast<std::size_t>(dy)];
      const int weight = row[static_cast<std::size_t>(dx + kMaxReachColumns)];
      if (weight != 0) taps.tap[taps.count++] = {dx, dy, weight};
    }
  }
  return taps;
}

// Ordered dither.

/// A 4 x 4 threshold matrix, row by row. It repeats over the page; a pixel is white where
/// its level is above its threshold.
using ThresholdMatrix = std::array<std::uint8_t, 16>;

/// Level 128 is the last that becomes 0, which a job prints as bare paper.
inline constexpr ThresholdMatrix kFixedThreshold = {
    128, 128, 128, 128,  //
    128, 128, 128, 128,  //
    128, 128, 128, 128,  //
    128, 128, 128, 128,
};

/// Index matrix of the ordered method. A pixel of level L is white where its index is below
/// L * 16 / 255, and everywhere at level 255.
inline constexpr std::array<std::uint8_t, 16> kOrderedIndexes = {
    0,  8,  2,  10,  //
    12, 4,  14, 6,   //
    3,  11, 1,  9,   //
    15, 7,  13, 5,
};

/// The index matrix as thresholds: the lowest white level of index i is
/// (i + 1) * 255 / 16, rounded up.
constexpr ThresholdMatrix orderedThresholds() {
  ThresholdMatrix thresholds = {};
  for (std::size_t i = 0; i < thresholds.size(); ++i) {
    thresholds[i] = static_cast<std::uint8_t>(((kOrderedIndexes[i] + 1) * 255 + 15) / 16 - 1);
  }
  return thresholds;
}

inline constexpr ThresholdMatrix kOrderedThresholds = orderedThresholds();

/// B. E. Bayer, 1973.
inline constexpr ThresholdMatrix kBayerThresholds = {
    0,   192, 48,  240,  //
    128, 64,  176, 112,  //
    32,  224, 16,  208,  //
    160, 96,  144, 80,
};

// The methods.

enum class MethodKind : std::uint8_t { kOrderedDither, kErrorDiffusion };

/// What a method number stands for.
struct Method {
  std::string_view name;
  MethodKind kind;
  const ThresholdMatrix* thresholds;  ///< Null for error diffusion.
  const DiffusionKernel* diffusion;   ///< Null for ordered dither.
  bool isVectorised;                  ///< Whether error diffusion has a vector kernel for it.
};

constexpr Method orderedDither(std::string_view name, const ThresholdMatrix& thresholds) {
  return {name, MethodKind::kOrderedDither, &thresholds, nullptr, false};
}

constexpr Method errorDiffusion(std::string_view name, const DiffusionKernel& kernel) {
  return {name, MethodKind::kErrorDiffusion, nullptr, &kernel, true};
}

constexpr Method scalarErrorDiffusion(std::string_view name, const DiffusionKernel& kernel) {
  return {name, MethodKind::kErrorDiffusion, nullptr, &kernel, false};
}

/// The methods by number. The numbers are those of `CxImage::Dither` and of `DitherType`, whose
/// 8 is the stencil method: a new method goes to the end. Row 8 stands for all numbers without
/// a row; it is scalar because no job selects it.
inline constexpr std::array kMethods = {
    orderedDither("threshold", kFixedThreshold),
    orderedDither("ordered", kOrderedThresholds),
    errorDiffusion("Burkes", kBurkes),
    errorDiffusion("Stucki", kStucki),
    errorDiffusion("Jarvis-Judice-Ninke", kJarvisJudiceNinke),
    errorDiffusion("Sierra", kSierra),
    errorDiffusion("Stevenson-Arce", kStevensonArce),
    orderedDither("Bayer", kBayerThresholds),
    scalarErrorDiffusion("Floyd-Steinberg", kFloydSteinberg),
};

/// Row of `kMethods` for any number.
constexpr std::size_t methodIndex(std::int64_t number) {
  constexpr std::size_t kFloydSteinbergRow = 8;
  const bool hasRow = number >= 0 && number < std::int64_t{kMethods.size()};
  return hasRow ? static_cast<std::size_t>(number) : kFloydSteinbergRow;
}

/// Whether the whole error is spread, and only to pixels that come later in scan order.
constexpr bool hasValidWeights(const Method& method) {
  if (method.kind != MethodKind::kErrorDiffusion) return true;
  int sum = 0;
  const DiffusionTaps taps = tapsOf(*method.diffusion);
  for (std::size_t i = 0; i < taps.count; ++i) {
    if (taps.tap[i].dy == 0 && taps.tap[i].dx <= 0) return false;
    sum += taps.tap[i].weight;
  }
  return sum == method.diffusion->divisor;
}

static_assert(std::all_of(kMethods.begin(), kMethods.end(), hasValidWeights));

}  // namespace wren::dither
