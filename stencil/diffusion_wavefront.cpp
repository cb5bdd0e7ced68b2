// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/diffusion_wavefront.h"

#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "stencil/error_diffusion.h"
#include "stencil/simd.h"

namespace stencil {
namespace {

constexpr int kRows = WavefrontDiffuser::kBlockRows;
constexpr int kVectors = 4;

// The taps by name; see kDiffusionTaps.
constexpr float kRight = kDiffusionTaps[0].weight;
constexpr float kSecondRight = kDiffusionTaps[1].weight;
constexpr float kBelowSecondLeft = kDiffusionTaps[2].weight;
constexpr float kBelowLeft = kDiffusionTaps[3].weight;
constexpr float kBelow = kDiffusionTaps[4].weight;
constexpr float kBelowRight = kDiffusionTaps[5].weight;

// What a white pixel counts beside no, one and two black neighbours. The three
// happen to be equally far apart as bit patterns, so each black neighbour takes the
// same integer off the bits of 255.
constexpr std::int32_t bits_of(float v) {
  return std::bit_cast<std::int32_t>(v);
}
constexpr std::int32_t kBesideNone = bits_of(kWhite);
constexpr std::int32_t kBesideOne = bits_of(kWhite * (1.0F - kNeighbourStep));
constexpr std::int32_t kBesideTwo = bits_of(kWhite * (1.0F - (kNeighbourStep + kNeighbourStep)));
constexpr std::int32_t kRebate = kBesideNone - kBesideOne;
static_assert(kBesideOne - kBesideTwo == kRebate);

// The row in lane j of vector k is 4 j + k: the row above is the same lane of the
// vector before, and only the first vector has to shift the last one by a lane.
constexpr int row_of_byte(std::size_t byte) {
  return static_cast<int>(4 * (byte % 4) + byte / 4);
}

// 16 x 16 bytes: four perfect shuffles turn rows into columns. The folds are loops
// that every compiler unrolls.
using Tile = std::array<U8x16, 16>;
using Indices = std::make_index_sequence<16>;

template <std::size_t... I>
inline Tile shuffled(const Tile& tile, std::index_sequence<I...>) {
  return {(I % 2 == 0 ? zip_low(tile[I / 2], tile[I / 2 + 8])
                      : zip_high(tile[I / 2], tile[I / 2 + 8]))...};
}

inline Tile transposed(const Tile& tile) {
  const Tile halfway = shuffled(shuffled(tile, Indices()), Indices());
  return shuffled(shuffled(halfway, Indices()), Indices());
}

// The 16 rows of a block where a slanted read or write meets them.
template <std::size_t... I>
inline Tile load_rows(const std::uint8_t* first, std::ptrdiff_t step, std::index_sequence<I...>) {
  return {load<U8x16>(first + row_of_byte(I) * step)...};
}

template <std::size_t... I>
inline void store_rows(std::uint8_t* first, std::ptrdiff_t step, const Tile& tile,
                       std::index_sequence<I...>) {
  (store(first + row_of_byte(I) * step, tile[I]), ...);
}

// Four rows, each at its own column. Slots of three turn with the steps: what a
// step stores is read three steps later in the slot that it overwrites, which is
// just when the row below arrives at that column.
struct Lanes {
  F32x4 sums[3];    // shares for the row below, still growing
  F32x4 second[3];  // shares for the second pixel to the right
  I32x4 rebate[3];  // kRebate for pixels that became black, else 0
  F32x4 done;       // a sum for the row below that has received all its shares
  F32x4 right;      // the share for the next pixel
  I32x4 white;      // the pixels decided in this step, as masks
};

// What lanes get from the row above.
struct FromAbove {
  F32x4 sum;
  I32x4 rebate;
};

// Which lanes are on pixels of the page, and which of those on its border.
struct Edges {
  I32x4 inside;
  I32x4 border;
};

// `Slot` is the number of the step modulo 3; `edges` is null where no lane is at one.
template <int Slot>
inline __attribute__((always_inline)) void step(Lanes& lanes, FromAbove above, F32x4 pixels,
                                                F32x4 threshold, const Edges* edges) {
  constexpr int kBefore = (Slot + 2) % 3;
  constexpr int kTwoBefore = (Slot + 1) % 3;
  I32x4 rebates = lanes.rebate[kBefore] + above.rebate;
  if (edges != nullptr) rebates &= ~edges->border;
  const F32x4 v = above.sum + lanes.second[kTwoBefore] + lanes.right + pixels;
  const I32x4 white = v > threshold;
  const F32x4 cost = as_floats(white & (splat(kBesideNone) - rebates));
  F32x4 error = v - cost;  // a black pixel costs 0
  if (edges != nullptr) error = as_floats(as_ints(error) & edges->inside);

  lanes.white = white;
  lanes.rebate[Slot] = ~white & splat(kRebate);
  lanes.right = error * splat(kRight);
  lanes.second[Slot] = error * splat(kSecondRight);
  lanes.done = lanes.sums[kTwoBefore] + error * splat(kBelowSecondLeft);
  lanes.sums[kBefore] = lanes.sums[kBefore] + error * splat(kBelowLeft);
  lanes.sums[Slot] = lanes.sums[Slot] + error * splat(kBelow);
  lanes.sums[kTwoBefore] = error * splat(kBelowRight);
}

// A block of 16 rows on its way over the page.
struct Wave {
  Lanes lanes[kVectors]{};
  F32x4 threshold;
  I32x4 pageBorder[kVectors];  // lanes on the first or last row of the page
  int lastColumn;
  std::uint8_t* slanted;  // pixels in, decisions out
  float* sums;            // of the row above the block; those it leaves go to the same place
  std::int32_t* rebates;
};

constexpr int kDelay = 3 * kRows;

// What the block above left for the first row, and what this block leaves below it.
inline __attribute__((always_inline)) FromAbove exchange(Wave& wave, int slot, int t) {
  const Lanes& last = wave.lanes[kVectors - 1];
  const FromAbove above = {shift_in(last.done, wave.sums[t]),
                           shift_in(last.rebate[slot], wave.rebates[t])};
  wave.sums[t - kDelay] = last.done[3];
  wave.rebates[t - kDelay] = last.rebate[slot][3];
  return above;
}

inline Edges edges_of(const Wave& wave, int vector, int t) {
  const int first = t - 3 * vector;
  const I32x4 x = {first, first - 12, first - 24, first - 36};
  const I32x4 last = splat(wave.lastColumn);
  return {(x >= 0) & (x <= last), (x <= 0) | (x >= last) | wave.pageBorder[vector]};
}

template <int Slot, bool AtEdge>
inline __attribute__((always_inline)) void step_vector(Wave& wave, int t, int vector,
                                                       FromAbove above, F32x4 pixels) {
  if constexpr (AtEdge) {
    const Edges edges = edges_of(wave, vector, t);
    step<Slot>(wave.lanes[vector], above, pixels, wave.threshold, &edges);
  } else {
    step<Slot>(wave.lanes[vector], above, pixels, wave.threshold, nullptr);
  }
}

// From the lowest rows up, so that each vector still finds what the one above it
// left in the step before. Written out: the compilers do not unroll it by themselves.
template <int Slot, bool AtEdge>
inline __attribute__((always_inline)) void step_all(Wave& wave, int t) {
  std::uint8_t* bytes = wave.slanted + std::ptrdiff_t{16} * t;
  const auto [pixels] = widen(load<U8x16>(bytes));
  Lanes* lanes = wave.lanes;
  const FromAbove first = exchange(wave, Slot, t);
  step_vector<Slot, AtEdge>(wave, t, 3, {lanes[2].done, lanes[2].rebate[Slot]}, pixels[3]);
  step_vector<Slot, AtEdge>(wave, t, 2, {lanes[1].done, lanes[1].rebate[Slot]}, pixels[2]);
  step_vector<Slot, AtEdge>(wave, t, 1, {lanes[0].done, lanes[0].rebate[Slot]}, pixels[1]);
  step_vector<Slot, AtEdge>(wave, t, 0, first, pixels[0]);
  store(bytes, narrow_masks(lanes[0].white, lanes[1].white, lanes[2].white, lanes[3].white));
}

template <bool AtEdge>
void steps(Wave& result, int from, int to) {
  Wave wave = result;  // of its own, so that stores of bytes cannot reach the lanes
  for (int t = from; t < to; t += 3) {
    step_all<0, AtEdge>(wave, t);
    step_all<1, AtEdge>(wave, t + 1);
    step_all<2, AtEdge>(wave, t + 2);
  }
  result = wave;
}

}  // namespace

WavefrontDiffuser::WavefrontDiffuser(int width, int height, int threshold)
    : width_(width),
      height_(height),
      threshold_(static_cast<float>(threshold)),
      steps_((width + kDelay + 2 + 15) / 16 * 16),
      pitch_(kMargin + steps_ + 16),
      rows_(static_cast<std::size_t>(pitch_) * kBlockRows),
      slanted_(static_cast<std::size_t>(steps_) * 16),
      sums_(static_cast<std::size_t>(steps_ + kDelay)),
      rebates_(static_cast<std::size_t>(steps_ + kDelay)) {}

void WavefrontDiffuser::run(std::uint8_t* out, std::ptrdiff_t stride, int rows) {
  slant();
  diffuse();
  unslant();
  for (int r = 0; r < rows; ++r) {
    std::memcpy(out + r * stride, row(r), static_cast<std::size_t>(width_));
  }
  y_ += kBlockRows;
}

void WavefrontDiffuser::slant() {
  for (int t = 0; t < steps_; t += 16) {
    const Tile tile = transposed(load_rows(row(0) + t, pitch_ - kLag, Indices()));
    std::memcpy(slanted_.data() + std::ptrdiff_t{16} * t, tile.data(), sizeof tile);
  }
}

void WavefrontDiffuser::unslant() {
  for (int t = 0; t < steps_; t += 16) {
    Tile tile;
    std::memcpy(tile.data(), slanted_.data() + std::ptrdiff_t{16} * t, sizeof tile);
    store_rows(row(0) + t, pitch_ - kLag, transposed(tile), Indices());
  }
}

void WavefrontDiffuser::diffuse() {
  Wave wave{};
  wave.threshold = splat(threshold_);
  wave.lastColumn = width_ - 1;
  wave.slanted = slanted_.data();
  wave.sums = sums_.data() + kDelay;
  wave.rebates = rebates_.data() + kDelay;
  const bool pageBorder = y_ == 0 || y_ + kBlockRows >= height_;
  for (int k = 0; k < kVectors; ++k) {
    const I32x4 y = {y_ + k, y_ + 4 + k, y_ + 8 + k, y_ + 12 + k};
    wave.pageBorder[k] = (y == 0) | (y == splat(height_ - 1));
  }
  const int end = width_ + kDelay;
  // From kDelay to width - 2 no lane is at an edge. Both limits are multiples of 3.
  const int inner = pageBorder ? 0 : (width_ - 1 - kDelay) / 3 * 3;
  const int innerEnd = inner > 0 ? kDelay + inner : kDelay;
  steps<true>(wave, 0, kDelay);
  if (inner > 0) steps<false>(wave, kDelay, innerEnd);
  steps<true>(wave, innerEnd, end);
}

}  // namespace stencil
