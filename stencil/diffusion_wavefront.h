// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion of the stencil on many rows at once. Each lane is a row and runs
// `kDiffusionLag` columns behind the row above. Every pixel receives its error terms in
// raster order, so the result has the same bits. Drawing: docs/KERNELS.md.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "stencil/recipe.h"

namespace wren::stencil {

/// The page that is halftoned and all that a kernel keeps between two blocks of rows. For the
/// kernels only.
struct DiffusionState {
  static constexpr int kMaxRows = 32;
  static constexpr int kMaxLanes = 8;
  static constexpr int kMaxSteps = 32;  // of a tile
  static constexpr int kHistory = 4;    // steps that a tile needs of the one before
  static constexpr int kValues = 4;

  int width;
  int height;
  float threshold;
  std::uint8_t* result;
  std::ptrdiff_t resultStride;

  int y = 0;             // the first row of the block
  int period;            // steps from one row of a lane to its next row
  int leadPx;            // levels in front of a row: the end of the lane's previous row
  std::ptrdiff_t pitch;  // bytes from row to row of `levels`
  std::uint8_t* levels;
  float* sums;            // for each column the error terms for the first row of the next block
  std::int32_t* charges;  // for each column the charge of the last row

  // The lanes between two tiles: error terms of a step that only the next steps need.
  std::array<std::array<float, kMaxRows>, kValues> values{};

  // What later steps need, one vector of rows for each step of a tile, behind those of the last
  // steps of the tile before.
  template <typename Element>
  using StepLine = std::array<Element, (kHistory + kMaxSteps) * kMaxRows>;
  alignas(64) StepLine<float> belowLine{};
  alignas(64) StepLine<float> secondLine{};
  alignas(64) StepLine<std::int32_t> chargeLine{};
};

/// Halftones a page of known size in blocks of rows, from the top. For each block the
/// caller fills row(0), row(1), ... with grey levels and calls `run`.
class WavefrontDiffuser {
 public:
  /// A pixel becomes white when its level and its error terms are above `threshold`.
  /// `width` and `height` are at least 1. `result` receives rows of 0 and 255, `resultStride`
  /// bytes apart; it may be memory from which the caller has already read the levels.
  WavefrontDiffuser(int width, int height, int threshold, std::uint8_t* result,
                    std::ptrdiff_t resultStride);

  /// Rows of a block; depends on the vector level.
  int blockRows() const { return blockRows_; }

  /// The `width` levels of a row of the next block; 0 <= r < blockRows(). There is room for the
  /// width rounded up to a multiple of 16.
  std::uint8_t* row(int r) {
    return state_.levels + static_cast<std::ptrdiff_t>(r) * state_.pitch + state_.leadPx;
  }

  /// Halftones the next block. Ends of rows may be written by the call after it; after the
  /// last block of the page the result is complete.
  void run();

 private:
  using Kernel = void (*)(DiffusionState& state);

  int blockRows_;
  Kernel kernel_;
  std::vector<std::uint8_t> levels_;
  std::vector<float> sums_;
  std::vector<std::int32_t> charges_;
  DiffusionState state_;
};

}  // namespace wren::stencil
