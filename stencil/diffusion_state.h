// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the kernels of the stencil's error diffusion share: the weights by name and the state
// between two blocks of rows. For `WavefrontDiffuser` and its kernels only.

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "stencil/recipe.h"
#include "stencil/stencil_dots.h"

namespace wren::stencil {

// The weights of the six taps.
inline constexpr float kRight = diffusionWeight(+1, 0);
inline constexpr float kSecondRight = diffusionWeight(+2, 0);
inline constexpr float kBelowSecondLeft = diffusionWeight(-2, 1);
inline constexpr float kBelowLeft = diffusionWeight(-1, 1);
inline constexpr float kBelow = diffusionWeight(0, 1);
inline constexpr float kBelowRight = diffusionWeight(+1, 1);
static_assert(std::size(kDiffusionTaps) == 6, "a step knows every tap");

// One column more than the error terms need: the sum that a row completes in a step is then
// not on the way to the next step of the row below.
inline constexpr int kLag = kDiffusionLag + 1;

// Steps without a pixel between two rows of a lane: before the first column one error term
// of 0 for the sum of that column, behind the last column two for the sums of the last two.
inline constexpr int kGapSteps = 3;

// Bits of the level of a white pixel with two black neighbours. A white neighbour adds a
// `kNeighbourCorrection`, a charge.
inline constexpr std::int32_t kLeastWhiteBits = kWhiteBits - 2 * kNeighbourCorrection;

/// The page that is halftoned and all that a kernel keeps between two blocks of rows.
struct DiffusionState {
  static constexpr int kRows = 16;  // of a block
  // A ring must hold the rows of two blocks and those that wait to be taken, and no block may
  // wrap.
  static_assert(StencilDots::kMinRingRows % kRows == 0 &&
                2 * kRows + 8 <= StencilDots::kMinRingRows);
  static constexpr int kMaxLanes = 8;
  static constexpr int kMaxSteps = 32;  // of a tile
  static constexpr int kHistory = 4;    // steps that a tile needs of the one before
  static_assert(kLag <= kHistory);
  static constexpr int kValues = 4;
  // Steps of tiles with a lane at an edge: the first 64 steps of a period and at most two tiles at
  // its end.
  static constexpr int kMaxEdgeSteps = 128;

  int width;
  int height;
  float threshold;
  StencilDots result;

  int y = 0;             // the first row of the block
  int period;            // steps from one row of a lane to its next row
  int leadPx;            // levels in front of a row: the end of the lane's previous row
  std::ptrdiff_t pitch;  // bytes from row to row of `levels`
  std::uint8_t* levels;
  float* sums;            // for each column the error terms for the first row of the next block
  std::int32_t* charges;  // for each column the charge of the last row

  // For each step with a lane at an edge of the page: masks of the lanes that are on the page and
  // of those on its border.
  std::int32_t* edgeMasks;
  bool hasEdgeMasks = false;

  // The lanes between two tiles: error terms of a step that only the next steps need.
  std::array<std::array<float, kRows>, kValues> values{};

  // What later steps need, one vector of rows for each step of a tile, behind those of the last
  // steps of the tile before.
  template <typename Element>
  using StepLine = std::array<Element, std::size_t{kHistory + kMaxSteps} * kRows>;
  alignas(64) StepLine<float> startLine{};
  alignas(64) StepLine<std::int32_t> chargeLine{};
};

}  // namespace wren::stencil
