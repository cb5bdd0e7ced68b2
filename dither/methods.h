// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The constants of the dithers: where error diffusion sends an error, and the
// threshold cells of the methods that compare. All of them are printed output:
// the order of the taps and the numbers of the methods stay as they are.

#ifndef WREN_BITMAP_DITHER_TABLES_H_
#define WREN_BITMAP_DITHER_TABLES_H_

#include <array>
#include <cstddef>
#include <cstdint>

/// The method numbers of CxImage::Dither. Every other number is kFloydSteinberg.
enum class DitherMethod : std::uint8_t {
  kThreshold = 0,
  kOrdered = 1,
  kBurkes = 2,
  kStucki = 3,
  kJarvisJudiceNinke = 4,
  kSierra = 5,
  kStevensonArce = 6,
  kBayer = 7,
  kFloydSteinberg = 8,
};

/// The method of a number as CxImage::Dither takes it.
constexpr DitherMethod ditherMethodOf(std::int64_t number) {
  return number >= 0 && number <= 7 ? static_cast<DitherMethod>(number)
                                    : DitherMethod::kFloydSteinberg;
}

/// The part weight/divisor of an error that goes `dx` pixels to the right and
/// `dy` rows down.
struct DiffusionTap {
  int dx;
  int dy;
  int weight;
};

/// An error-diffusion kernel. The taps are in the order in which they are
/// applied; additions clamp, so another order prints other dots.
struct DiffusionKernel {
  int divisor;
  std::size_t tapCount;
  std::array<DiffusionTap, 12> taps;
};

/// Burkes 1988.
inline constexpr DiffusionKernel kBurkes = {32,
                                            7,
                                            {{
                                                {1, 0, 8},
                                                {2, 0, 4},
                                                {-2, 1, 2},
                                                {-1, 1, 4},
                                                {0, 1, 8},
                                                {1, 1, 4},
                                                {2, 1, 2},
                                            }}};

/// Stucki 1981.
inline constexpr DiffusionKernel kStucki = {42,
                                            12,
                                            {{
                                                {1, 0, 8},
                                                {2, 0, 4},
                                                {-2, 1, 2},
                                                {-1, 1, 4},
                                                {0, 1, 8},
                                                {1, 1, 4},
                                                {2, 1, 2},
                                                {-2, 2, 1},
                                                {-1, 2, 2},
                                                {0, 2, 4},
                                                {1, 2, 2},
                                                {2, 2, 1},
                                            }}};

/// Jarvis, Judice and Ninke 1976.
inline constexpr DiffusionKernel kJarvisJudiceNinke = {48,
                                                       12,
                                                       {{
                                                           {1, 0, 7},
                                                           {2, 0, 5},
                                                           {-2, 1, 3},
                                                           {-1, 1, 5},
                                                           {0, 1, 7},
                                                           {1, 1, 5},
                                                           {2, 1, 3},
                                                           {-2, 2, 1},
                                                           {-1, 2, 3},
                                                           {0, 2, 5},
                                                           {1, 2, 3},
                                                           {2, 2, 1},
                                                       }}};

/// Sierra 1989.
inline constexpr DiffusionKernel kSierra = {32,
                                            10,
                                            {{
                                                {1, 0, 5},
                                                {2, 0, 3},
                                                {-2, 1, 2},
                                                {-1, 1, 4},
                                                {0, 1, 5},
                                                {1, 1, 4},
                                                {2, 1, 2},
                                                {-1, 2, 2},
                                                {0, 2, 3},
                                                {1, 2, 2},
                                            }}};

/// Stevenson and Arce 1985. It has no tap at the next pixel of the row and is
/// the only kernel that reaches three rows down.
inline constexpr DiffusionKernel kStevensonArce = {200,
                                                   12,
                                                   {{
                                                       {2, 0, 32},
                                                       {-3, 1, 12},
                                                       {-1, 1, 26},
                                                       {1, 1, 30},
                                                       {3, 1, 16},
                                                       {-2, 2, 12},
                                                       {0, 2, 26},
                                                       {2, 2, 12},
                                                       {-3, 3, 5},
                                                       {-1, 3, 12},
                                                       {1, 3, 12},
                                                       {3, 3, 5},
                                                   }}};

/// Floyd and Steinberg 1976.
inline constexpr DiffusionKernel kFloydSteinberg = {16,
                                                    4,
                                                    {{
                                                        {1, 0, 7},
                                                        {-1, 1, 3},
                                                        {0, 1, 5},
                                                        {1, 1, 1},
                                                    }}};

/// The farthest a tap reaches: columns to either side, and rows down.
inline constexpr int kMaxReachColumns = 3;
inline constexpr int kMaxReachRows = 3;

/// Sixteen thresholds, those of row y at 4 * (y % 4). A pixel is white where
/// its level is above its threshold.
using ThresholdCell = std::array<std::uint8_t, 16>;

/// The ordered matrix, row by row. A pixel of level L is white where the entry
/// is below L * 16 / 255, and everywhere at level 255.
inline constexpr std::array<std::uint8_t, 16> kOrderedMatrix = {
    0,  8,  2,  10,  //
    12, 4,  14, 6,   //
    3,  11, 1,  9,   //
    15, 7,  13, 5,
};

/// Level 128 is the last that the fixed threshold prints black.
constexpr ThresholdCell fixedThresholdCell() {
  ThresholdCell cell = {};
  for (auto& threshold : cell) threshold = 128;
  return cell;
}

/// The ordered matrix as thresholds: the first white level of an entry m is
/// (m + 1) * 255 / 16, rounded up.
constexpr ThresholdCell orderedCell() {
  ThresholdCell cell = {};
  for (std::size_t i = 0; i < cell.size(); ++i) {
    cell[i] = static_cast<std::uint8_t>(((kOrderedMatrix[i] + 1) * 255 + 15) / 16 - 1);
  }
  return cell;
}

/// One threshold of the Bayer matrix: the bits of a xor b and of b, taken in
/// turn from the lowest bit up (B. E. Bayer 1973, by bit interleaving). Only
/// the low eight bits are kept.
constexpr std::uint8_t bayerThreshold(unsigned a, unsigned b, unsigned order) {
  unsigned threshold = 0;
  for (unsigned i = 0; i < order; ++i) {
    threshold = threshold << 1 | ((a & 1) ^ (b & 1));
    threshold = threshold << 1 | (b & 1);
    a >>= 1;
    b >>= 1;
  }
  return static_cast<std::uint8_t>(threshold);
}

/// The part of the order-4 Bayer matrix that is printed: its columns and rows
/// repeat after four, so that 16 of the 256 thresholds are used.
constexpr ThresholdCell bayerCell() {
  constexpr unsigned kOrder = 4;
  ThresholdCell cell = {};
  for (unsigned i = 0; i < cell.size(); ++i) {
    cell[i] = bayerThreshold(i / kOrder, i % kOrder, kOrder);
  }
  return cell;
}

static_assert(bayerCell() == ThresholdCell{0, 192, 48, 240,    //
                                           128, 64, 176, 112,  //
                                           32, 224, 16, 208,   //
                                           160, 96, 144, 80});

constexpr int sumOfWeights(const DiffusionKernel& kernel) {
  int sum = 0;
  for (std::size_t i = 0; i < kernel.tapCount; ++i) sum += kernel.taps[i].weight;
  return sum;
}

static_assert(sumOfWeights(kBurkes) == kBurkes.divisor);
static_assert(sumOfWeights(kStucki) == kStucki.divisor);
static_assert(sumOfWeights(kJarvisJudiceNinke) == kJarvisJudiceNinke.divisor);
static_assert(sumOfWeights(kSierra) == kSierra.divisor);
static_assert(sumOfWeights(kStevensonArce) == kStevensonArce.divisor);
static_assert(sumOfWeights(kFloydSteinberg) == kFloydSteinberg.divisor);

#endif  // WREN_BITMAP_DITHER_TABLES_H_
