// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/diffusion_wavefront.h"

#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "stencil/simd.h"

namespace wren::stencil {
namespace {

constexpr int kRows = WavefrontDiffuser::kBlockRows;
constexpr int kLanes = 4;  // of one vector
constexpr int kVectors = kRows / kLanes;
constexpr int kDelay = kDiffusionLag * kRows;

// The weights of the six taps.
constexpr float kRight = diffusionWeight(+1, 0);
constexpr float kSecondRight = diffusionWeight(+2, 0);
constexpr float kBelowSecondLeft = diffusionWeight(-2, 1);
constexpr float kBelowLeft = diffusionWeight(-1, 1);
constexpr float kBelow = diffusionWeight(0, 1);
constexpr float kBelowRight = diffusionWeight(+1, 1);
static_assert(std::size(kDiffusionTaps) == 6, "a step knows every tap");
static_assert(kDiffusionLag == 3, "the delay lines of a step have three slots");

// Row 4 j + k is lane j of vector k: the row above is the same lane of the previous
// vector. Only the first vector has to move the last one up by a lane.
constexpr int rowOfByte(std::size_t byte) {
  return static_cast<int>(kLanes * (byte % kVectors) + byte / kVectors);
}

// Transposes 16 x 16 bytes by four interleavings. Pack expansions instead of loops, so that
// every compiler unrolls them.
using Tile = std::array<U8x16, 16>;
using Indices = std::make_index_sequence<16>;

template <std::size_t... I>
inline Tile shuffled(const Tile& tile, std::index_sequence<I...>) {
  return {(I % 2 == 0 ? zipLow(tile[I / 2], tile[I / 2 + 8])
                      : zipHigh(tile[I / 2], tile[I / 2 + 8]))...};
}

inline Tile transposed(const Tile& tile) {
  const Tile halfway = shuffled(shuffled(tile, Indices()), Indices());
  return shuffled(shuffled(halfway, Indices()), Indices());
}

// The same 16 steps of the 16 rows of a block, `step` bytes apart.
template <std::size_t... I>
inline Tile loadRows(const std::uint8_t* first, std::ptrdiff_t step, std::index_sequence<I...>) {
  return {load<U8x16>(first + rowOfByte(I) * step)...};
}

template <std::size_t... I>
inline void storeRows(std::uint8_t* first, std::ptrdiff_t step, const Tile& tile,
                      std::index_sequence<I...>) {
  (store(first + rowOfByte(I) * step, tile[I]), ...);
}

// Four rows, each at its own column. The arrays of three are delay lines: a slot is
// read three steps after it was written, just before it is overwritten. By then the
// row below has reached that column.
struct Lanes {
  F32x4 below[3];       // error terms for the row below, not complete yet
  F32x4 second[3];      // error terms for the second pixel to the right
  I32x4 correction[3];  // `kNeighbourCorrection` of pixels that became black, else 0
  F32x4 complete;       // a sum of error terms for the row below, complete
  F32x4 right;          // error terms for the next pixel
  I32x4 white;          // the pixels decided in this step, as masks
};

// Input of a step from the row above.
struct FromAbove {
  F32x4 sum;
  I32x4 correction;
};

// Masks of the lanes that are on pixels of the page and of those on its border.
struct Edges {
  I32x4 inside;
  I32x4 border;
};

// `Slot` is the number of the step modulo 3; `edges` is null if no lane is at an edge.
template <int Slot>
inline __attribute__((always_inline)) void step(Lanes& lanes, FromAbove above, F32x4 pixels,
                                                F32x4 threshold, const Edges* edges) {
  constexpr int kBefore = (Slot + 2) % 3;
  constexpr int kTwoBefore = (Slot + 1) % 3;
  I32x4 corrections = lanes.correction[kBefore] + above.correction;
  if (edges != nullptr) corrections &= ~edges->border;
  const F32x4 v = above.sum + lanes.second[kTwoBefore] + lanes.right + pixels;
  const I32x4 white = v > threshold;
  const F32x4 level = asFloats(white & (splat(kWhiteBits) - corrections));  // black: 0
  F32x4 error = v - level;
  if (edges != nullptr) error = asFloats(asInts(error) & edges->inside);

  lanes.white = white;
  lanes.correction[Slot] = ~white & splat(kNeighbourCorrection);
  lanes.right = error * splat(kRight);
  lanes.second[Slot] = error * splat(kSecondRight);
  lanes.complete = lanes.below[kTwoBefore] + error * splat(kBelowSecondLeft);
  lanes.below[kBefore] = lanes.below[kBefore] + error * splat(kBelowLeft);
  lanes.below[Slot] = lanes.below[Slot] + error * splat(kBelow);
  lanes.below[kTwoBefore] = error * splat(kBelowRight);
}

// The state of a block of 16 rows.
struct Wave {
  Lanes lanes[kVectors]{};
  F32x4 threshold;
  I32x4 pageBorder[kVectors];  // lanes on the first or last row of the page
  int lastColumn;
  std::uint8_t* skewed;  // levels in, decisions out
  float* sums;           // from the block above, overwritten with those for the block below
  std::int32_t* corrections;
};

// Reads what the block above left for the first row, and stores what the last row
// leaves for the block below.
inline __attribute__((always_inline)) FromAbove exchange(Wave& wave, int slot, int t) {
  const Lanes& last = wave.lanes[kVectors - 1];
  const FromAbove above = {shiftIn(last.complete, wave.sums[t]),
                           shiftIn(last.correction[slot], wave.corrections[t])};
  wave.sums[t - kDelay] = last.complete[kLanes - 1];
  wave.corrections[t - kDelay] = last.correction[slot][kLanes - 1];
  return above;
}

inline Edges edgesOf(const Wave& wave, int vector, int t) {
  constexpr int kLaneLag = kDiffusionLag * kVectors;
  const int first = t - kDiffusionLag * vector;
  const I32x4 x = {first, first - kLaneLag, first - 2 * kLaneLag, first - 3 * kLaneLag};
  const I32x4 last = splat(wave.lastColumn);
  return {(x >= 0) & (x <= last), (x <= 0) | (x >= last) | wave.pageBorder[vector]};
}

template <int Slot, bool AtEdge>
inline __attribute__((always_inline)) void stepVector(Wave& wave, int t, int vector,
                                                      FromAbove above, F32x4 pixels) {
  if constexpr (AtEdge) {
    const Edges edges = edgesOf(wave, vector, t);
    step<Slot>(wave.lanes[vector], above, pixels, wave.threshold, &edges);
  } else {
    step<Slot>(wave.lanes[vector], above, pixels, wave.threshold, nullptr);
  }
}

// From the lowest rows up: each vector needs what the vector above left in the previous
// step. Not a loop, because the compilers do not unroll it.
template <int Slot, bool AtEdge>
inline __attribute__((always_inline)) void stepAll(Wave& wave, int t) {
  std::uint8_t* bytes = wave.skewed + std::ptrdiff_t{kRows} * t;
  const auto [pixels] = widen(load<U8x16>(bytes));
  Lanes* lanes = wave.lanes;
  const FromAbove first = exchange(wave, Slot, t);
  stepVector<Slot, AtEdge>(wave, t, 3, {lanes[2].complete, lanes[2].correction[Slot]}, pixels[3]);
  stepVector<Slot, AtEdge>(wave, t, 2, {lanes[1].complete, lanes[1].correction[Slot]}, pixels[2]);
  stepVector<Slot, AtEdge>(wave, t, 1, {lanes[0].complete, lanes[0].correction[Slot]}, pixels[1]);
  stepVector<Slot, AtEdge>(wave, t, 0, first, pixels[0]);
  store(bytes, narrowMasks(lanes[0].white, lanes[1].white, lanes[2].white, lanes[3].white));
}

template <bool AtEdge>
void steps(Wave& result, int from, int to) {
  Wave wave = result;  // a local copy: stores of bytes cannot alias it
  for (int t = from; t < to; t += 3) {
    stepAll<0, AtEdge>(wave, t);
    stepAll<1, AtEdge>(wave, t + 1);
    stepAll<2, AtEdge>(wave, t + 2);
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
      skewed_(static_cast<std::size_t>(steps_) * kBlockRows),
      sums_(static_cast<std::size_t>(steps_ + kDelay)),
      corrections_(static_cast<std::size_t>(steps_ + kDelay)) {}

void WavefrontDiffuser::run(std::uint8_t* out, std::ptrdiff_t stride, int rows) {
  skew();
  diffuse();
  unskew();
  for (int r = 0; r < rows; ++r) {
    std::memcpy(out + r * stride, row(r), static_cast<std::size_t>(width_));
  }
  y_ += kBlockRows;
}

void WavefrontDiffuser::skew() {
  for (int t = 0; t < steps_; t += 16) {
    const Tile tile = transposed(loadRows(row(0) + t, pitch_ - kDiffusionLag, Indices()));
    std::memcpy(skewed_.data() + std::ptrdiff_t{kRows} * t, tile.data(), sizeof tile);
  }
}

void WavefrontDiffuser::unskew() {
  for (int t = 0; t < steps_; t += 16) {
    Tile tile;
    std::memcpy(tile.data(), skewed_.data() + std::ptrdiff_t{kRows} * t, sizeof tile);
    storeRows(row(0) + t, pitch_ - kDiffusionLag, transposed(tile), Indices());
  }
}

void WavefrontDiffuser::diffuse() {
  Wave wave{};
  wave.threshold = splat(threshold_);
  wave.lastColumn = width_ - 1;
  wave.skewed = skewed_.data();
  wave.sums = sums_.data() + kDelay;
  wave.corrections = corrections_.data() + kDelay;
  const bool pageBorder = y_ == 0 || y_ + kBlockRows >= height_;
  for (int k = 0; k < kVectors; ++k) {
    const I32x4 y = {y_ + k, y_ + kVectors + k, y_ + 2 * kVectors + k, y_ + 3 * kVectors + k};
    wave.pageBorder[k] = (y == 0) | (y == splat(height_ - 1));
  }
  const int end = width_ + kDelay;
  // From `kDelay` up to, not including, `innerEnd` no lane is at an edge; both are multiples of 3
  // because a pass is three steps.
  const int inner = pageBorder ? 0 : (width_ - 1 - kDelay) / 3 * 3;
  const int innerEnd = inner > 0 ? kDelay + inner : kDelay;
  steps<true>(wave, 0, kDelay);
  if (inner > 0) steps<false>(wave, kDelay, innerEnd);
  steps<true>(wave, innerEnd, end);
}

}  // namespace wren::stencil
