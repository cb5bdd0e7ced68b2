// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion of the stencil on many rows at once. Each lane is a row and runs
// `kDiffusionLag` columns behind the row above. Every pixel receives its error terms in
// raster order, so the result has the same bits. Drawing: docs/KERNELS.md.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stencil/diffusion_state.h"

namespace wren::stencil {

/// Halftones a page of known size in blocks of rows, from the top. For each block the
/// caller fills row(0), row(1), ... with grey levels and calls `run`.
class WavefrontDiffuser {
 public:
  static constexpr int kBlockRows = DiffusionState::kRows;

  /// A pixel becomes white when its level and its error terms are above `threshold`.
  /// `width` and `height` are at least 1. `result` receives rows of 0 and 255; it may be
  /// memory from which the caller has already read the levels.
  WavefrontDiffuser(int width, int height, int threshold, const StencilDots& result);

  /// The `width` levels of a row of the next block; 0 <= r < kBlockRows. There is room for the
  /// width rounded up to a multiple of 16.
  std::uint8_t* row(int r) {
    return state_.levels + static_cast<std::ptrdiff_t>(r) * state_.pitch + state_.leadPx;
  }

  /// Halftones the next block. Ends of rows may be written by the call after it; after the
  /// last block of the page the result is complete.
  void run();

 private:
  using Kernel = void (*)(DiffusionState& state);

  Kernel kernel_;
  std::vector<std::uint8_t> levels_;
  std::vector<float> sums_;
  std::vector<std::int32_t> charges_;
  std::vector<std::int32_t> edgeMasks_;
  DiffusionState state_;
};

}  // namespace wren::stencil
