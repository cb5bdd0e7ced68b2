// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/diffusion_scalar.h"

#include <algorithm>
#include <bit>

namespace wren::stencil {
namespace {

// Copies of what the loop reads, since the compiler cannot know that dots do not change it.
struct ScalarRow {
  const std::uint8_t* levels;
  std::uint8_t* dots;
  float* sums;
  std::int32_t* charges;
  int width;
  float threshold;
  bool isBorder;
};

void diffuseRow(const ScalarRow& given) {
  const ScalarRow row = given;  // a local copy: stores of bytes cannot alias it
  float right = 0.0F;
  float second = 0.0F;
  float nextSecond = 0.0F;
  float twoTerms = 0.0F;
  float oneTerm = 0.0F;
  float firstTerm = 0.0F;
  std::int32_t chargeLeft = 0;
  for (int x = 0; x < row.width; ++x) {
    const float v = ((row.sums[x] + second) + right) + static_cast<float>(row.levels[x]);
    const bool white = v > row.threshold;
    const bool isBorder = row.isBorder || x == 0 || x == row.width - 1;
    const std::int32_t bits = isBorder ? kWhiteBits : kLeastWhiteBits + row.charges[x] + chargeLeft;
    const float error = white ? v - std::bit_cast<float>(bits) : v;
    chargeLeft = white ? kNeighbourCorrection : 0;
    row.charges[x] = chargeLeft;
    row.dots[x] = white ? 255 : 0;
    right = error * kRight;
    second = nextSecond;
    nextSecond = error * kSecondRight;
    if (x >= 2) row.sums[x - 2] = twoTerms + error * kBelowSecondLeft;
    twoTerms = oneTerm + error * kBelowLeft;
    oneTerm = firstTerm + error * kBelow;
    firstTerm = error * kBelowRight;
  }
  if (row.width >= 2) row.sums[row.width - 2] = twoTerms;
  row.sums[row.width - 1] = oneTerm;
}

}  // namespace

void diffuseBlockScalar(DiffusionState& state) {
  const int rows = std::min(DiffusionState::kRows, state.height - state.y);
  for (int r = 0; r < rows; ++r) {
    const int y = state.y + r;
    diffuseRow({.levels = state.levels + r * state.pitch + state.leadPx,
                .dots = state.result.row(y),
                .sums = state.sums,
                .charges = state.charges,
                .width = state.width,
                .threshold = state.threshold,
                .isBorder = y == 0 || y == state.height - 1});
  }
}

}  // namespace wren::stencil
