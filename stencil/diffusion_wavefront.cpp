// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A lane that reaches the end of its row goes on with its row of the next block, after a few
// steps without a pixel that let its error terms run out. So the wavefront has no start or end
// within a page, and only some steps of each period have lanes at the edge of the page.

#include "stencil/diffusion_wavefront.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "common/vector_level.h"
#include "common/vector_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stencil/diffusion_wavefront.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef WREN_STENCIL_DIFFUSION_WAVEFRONT
#define WREN_STENCIL_DIFFUSION_WAVEFRONT

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
static_assert(kLag <= DiffusionState::kHistory);

// Steps without a pixel between two rows of a lane: before the first column one error term
// of 0 for the sum of that column, behind the last column two for the sums of the last two.
inline constexpr int kGapSteps = 3;

// Bits of the level of a white pixel with two black neighbours. A white neighbour adds a
// `kNeighbourCorrection`, a charge.
inline constexpr std::int32_t kLeastWhiteBits = kWhiteBits - 2 * kNeighbourCorrection;

}  // namespace wren::stencil

#endif  // WREN_STENCIL_DIFFUSION_WAVEFRONT

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::stencil::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, DiffusionState::kMaxLanes>;
using Ints = hn::RebindToSigned<Floats>;
using Bytes = hn::ScalableTag<std::uint8_t>;
using BlockBytes = hn::CappedTag<std::uint8_t, 16>;
using FloatVector = hn::Vec<Floats>;
using IntVector = hn::Vec<Ints>;
using ByteVector = hn::Vec<Bytes>;

constexpr Floats kFloats;
constexpr Ints kInts;
constexpr Bytes kBytes;

constexpr int kLanes = static_cast<int>(hn::MaxLanes(kFloats));
#ifndef WREN_V
#define WREN_V 2
#endif
constexpr int kVectors = kLanes == 8 ? WREN_V : 4;
constexpr int kRows = kVectors * kLanes;
static_assert(kRows <= DiffusionState::kMaxRows);
constexpr int kGroupRows = 16;  // rows of a tile
constexpr int kGroups = kRows / kGroupRows;
constexpr int kGroupVectors = kGroupRows / kLanes;
static_assert(kRows % kGroupRows == 0);

// Steps of a tile.
constexpr int kSteps = static_cast<int>(hn::MaxLanes(kBytes));

// Row `kVectors * j + k` of a block is a lane of vector k, the last rows are the first lanes:
// the row above is the same lane of the previous vector. Only the first vector has to move
// the last one by a lane.
constexpr int rowOfLane(int vector, int lane) {
  return kVectors * (kLanes - 1 - lane) + vector;
}

// The row of byte `i` of a step.
constexpr int rowOfByte(int i) {
  return rowOfLane(i / kLanes, i % kLanes);
}

// Tiles: the same steps of 16 rows. Before the transpose vector i is a row; after it, byte i of
// a 16-byte block is row i, and vector s holds the steps s, s + 16, ...
struct Tile {
  ByteVector v[kGroupRows];
};

using AllRows = std::make_index_sequence<kGroupRows>;

// Written out for every vector, so that as much of the tile as possible stays in registers.
template <std::size_t... I>
HWY_INLINE Tile interleaved(const Tile& tile, std::index_sequence<I...>) {
  return {{(I % 2 == 0 ? hn::InterleaveLower(kBytes, tile.v[I / 2], tile.v[I / 2 + 8])
                       : hn::InterleaveUpper(kBytes, tile.v[I / 2], tile.v[I / 2 + 8]))...}};
}

HWY_INLINE Tile transposed(const Tile& tile) {
  return interleaved(interleaved(interleaved(interleaved(tile, AllRows()), AllRows()), AllRows()),
                     AllRows());
}

// The levels or dots of one tile of each group, by step.
struct Steps {
  static constexpr std::size_t kGroupBytes = kGroupRows * kSteps;
  alignas(64) std::uint8_t bytes[kGroups][kGroupBytes];

  static constexpr std::size_t offset(int step) {
    return static_cast<std::size_t>(step % 16 * kSteps + step / 16 * 16);
  }
};

// A lane's error terms between two steps; `x` is the column of the pixel decided last.
struct Lane {
  FloatVector right;      // for x + 1 of the same row
  FloatVector twoTerms;   // for x - 1 of the row below; one more to come
  FloatVector oneTerm;    // for x of the row below
  FloatVector firstTerm;  // for x + 1 of the row below
};

// Where a vector stores what later steps need.
struct StepPlace {
  float* below;   // complete sums of error terms for the row below
  float* second;  // error terms for the second pixel to the right
  std::int32_t* charges;
};

struct Wave {
  Lane lanes[kVectors];
  FloatVector threshold;
};

// Masks of the lanes that are on pixels of the page and of those on its border.
struct Edges {
  hn::Mask<Floats> inside;
  hn::Mask<Floats> border;
};

// Which rows of the page the lanes are on.
struct RowMasks {
  alignas(64) std::int32_t border[2][kRows];  // of the block before and of this block
  bool isFirstBlock;
};

HWY_INLINE Edges edgesOf(const DiffusionState& state, const RowMasks& rows, int vector, int step) {
  alignas(64) std::int32_t first[kLanes];
  for (int lane = 0; lane < kLanes; ++lane) {
    first[lane] = -kLag * rowOfLane(vector, lane) - 1;
  }
  const auto zero = hn::Zero(kInts);
  const auto set = [](int v) { return hn::Set(kInts, v); };
  const IntVector column = hn::Add(hn::Load(kInts, first), set(step));
  const auto isBefore = hn::Lt(column, zero);
  const IntVector x = hn::Add(column, hn::IfThenElseZero(isBefore, set(state.period)));
  const IntVector rowBorder =
      hn::IfThenElse(isBefore, hn::Load(kInts, rows.border[0] + vector * kLanes),
                     hn::Load(kInts, rows.border[1] + vector * kLanes));
  auto inside = hn::Lt(x, set(state.width));
  if (rows.isFirstBlock) inside = hn::And(inside, hn::Not(isBefore));
  const auto border =
      hn::Or(hn::Or(hn::Eq(x, zero), hn::Eq(x, set(state.width - 1))), hn::Ne(rowBorder, zero));
  return {hn::RebindMask(kFloats, inside), hn::RebindMask(kFloats, border)};
}

// (v1, v2, ..., last): moves every lane down by one. The lane of the row above.
template <class D>
HWY_INLINE hn::Vec<D> shiftedIn(D d, hn::Vec<D> v, hn::TFromD<D> last) {
  alignas(64) std::int32_t next[kLanes];
  for (int i = 0; i < kLanes; ++i) next[i] = (i + 1) % kLanes;
  const auto rotated = hn::TableLookupLanes(v, hn::SetTableIndices(d, next));
  const auto isLast = hn::Not(hn::FirstN(d, kLanes - 1));
  return hn::IfThenElse(isLast, hn::Set(d, last), rotated);
}

HWY_INLINE FloatVector pixelsOf(const std::uint8_t* bytes) {
  const hn::Rebind<std::uint8_t, Floats> few;
  return hn::ConvertTo(kFloats, hn::PromoteTo(kInts, hn::LoadU(few, bytes)));
}

// Decides the pixels of a vector and stores what later steps need. `sums` are the error terms
// from the row above, `charges` the charges of the row above.
template <bool AtEdge>
HWY_INLINE IntVector decide(Lane& lane, FloatVector sums, IntVector charges, FloatVector pixels,
                            FloatVector threshold, const Edges& edges, StepPlace place) {
  const auto weight = [](float w) HWY_ATTR { return hn::Set(kFloats, w); };
  const FloatVector second = hn::Load(kFloats, place.second - 2 * kRows);
  const IntVector chargesLeft = hn::Load(kInts, place.charges - kRows);
  const FloatVector v = hn::Add(hn::Add(hn::Add(sums, second), lane.right), pixels);
  const auto white = hn::Gt(v, threshold);
  FloatVector whiteLevel =
      hn::BitCast(kFloats, hn::Add(hn::Add(hn::Set(kInts, kLeastWhiteBits), charges), chargesLeft));
  if constexpr (AtEdge) {
    whiteLevel = hn::IfThenElse(edges.border, hn::Set(kFloats, kWhite), whiteLevel);
  }
  FloatVector error = hn::Sub(v, hn::IfThenElseZero(white, whiteLevel));
  if constexpr (AtEdge) error = hn::IfThenElseZero(edges.inside, error);
  lane.right = hn::Mul(error, weight(kRight));
  hn::Store(hn::Mul(error, weight(kSecondRight)), kFloats, place.second);
  hn::Store(hn::Add(lane.twoTerms, hn::Mul(error, weight(kBelowSecondLeft))), kFloats, place.below);
  lane.twoTerms = hn::Add(lane.oneTerm, hn::Mul(error, weight(kBelowLeft)));
  lane.oneTerm = hn::Add(lane.firstTerm, hn::Mul(error, weight(kBelow)));
  lane.firstTerm = hn::Mul(error, weight(kBelowRight));
  const IntVector now =
      hn::IfThenElseZero(hn::RebindMask(kInts, white), hn::Set(kInts, kNeighbourCorrection));
  hn::Store(now, kInts, place.charges);
  return now;
}

// Dots from charges: the packing saturates them to 255.
HWY_INLINE void storeDots(const IntVector* charges, std::uint8_t* bytes) {
  const hn::Repartition<std::int16_t, Ints> words;
  const hn::Rebind<std::uint8_t, decltype(words)> few;
  constexpr int kFew = static_cast<int>(
      hn::MaxLanes(hn::Rebind<std::uint8_t, hn::Repartition<std::int16_t, Ints>>()));
  for (int i = 0; i < kGroupVectors / 2; ++i) {
    hn::StoreU(hn::DemoteTo(few, hn::ReorderDemote2To(words, charges[2 * i], charges[2 * i + 1])),
               few, bytes + i * kFew);
  }
}

// The row of byte `i` of the dots of a step.
constexpr int rowOfDot(int i) {
  // `ReorderDemote2To` keeps blocks of 16 bytes apart.
  const int pair = i / (2 * kLanes);
  const int block = i % (2 * kLanes) / 8;
  const int vector = 2 * pair + i % 8 / 4;
  return rowOfLane(vector, block * 4 + i % 4);
}

template <bool AtEdge, std::size_t... K>
HWY_INLINE void stepAll(Wave& wave, const DiffusionState& state, const RowMasks& rows, int u,
                        StepPlace place, const std::uint8_t* levels, std::uint8_t* dots,
                        std::index_sequence<K...>) {
  IntVector charges[kVectors];
  const auto one = [&](auto index) HWY_ATTR {
    constexpr int k = decltype(index)::value;
    constexpr int kAbove = (k + kVectors - 1) % kVectors * kLanes;
    Edges edges;
    if constexpr (AtEdge) edges = edgesOf(state, rows, k, u);
    FloatVector sums = hn::Load(kFloats, place.below + kAbove - (kLag - 2) * kRows);
    IntVector above = hn::Load(kInts, place.charges + kAbove - kLag * kRows);
    if constexpr (k == 0) {
      sums = shiftedIn(kFloats, sums, state.sums[u]);
      above = shiftedIn(kInts, above, state.charges[u]);
    }
    const FloatVector pixels =
        pixelsOf(levels + k / kGroupVectors * Steps::kGroupBytes + k % kGroupVectors * kLanes);
    const StepPlace own = {place.below + k * kLanes, place.second + k * kLanes,
                           place.charges + k * kLanes};
    charges[k] = decide<AtEdge>(wave.lanes[k], sums, above, pixels, wave.threshold, edges, own);
  };
  (one(std::integral_constant<int, static_cast<int>(K)>()), ...);
  for (int g = 0; g < kGroups; ++g) {
    storeDots(charges + g * kGroupVectors, dots + g * Steps::kGroupBytes);
  }
}

HWY_INLINE void loadWave(const DiffusionState& state, Wave& wave) {
  for (int k = 0; k < kVectors; ++k) {
    const auto value = [&](std::size_t i) HWY_ATTR {
      return hn::LoadU(kFloats, state.values[i].data() + k * kLanes);
    };
    wave.lanes[k] = {value(0), value(1), value(2), value(3)};
  }
  wave.threshold = hn::Set(kFloats, state.threshold);
}

HWY_INLINE void storeWave(const Wave& wave, DiffusionState& state) {
  for (int k = 0; k < kVectors; ++k) {
    const auto keep = [&](std::size_t i, FloatVector v)
                          HWY_ATTR { hn::StoreU(v, kFloats, state.values[i].data() + k * kLanes); };
    const Lane& lane = wave.lanes[k];
    keep(0, lane.right);
    keep(1, lane.twoTerms);
    keep(2, lane.oneTerm);
    keep(3, lane.firstTerm);
  }
}

// Moves the last steps of a tile in front of the next tile.
template <class Line>
HWY_INLINE void keepHistory(Line& line, int count) {
  constexpr std::size_t kKept = DiffusionState::kHistory * kRows;
  std::memmove(line.data(), line.data() + count * kRows, kKept * sizeof line[0]);
}

// The steps from `u` of a period, at most `kSteps`.
template <bool AtEdge>
HWY_NOINLINE void diffuseTile(DiffusionState& state, const RowMasks& rows, int u, int count,
                              const Steps& levels, Steps& dots) {
  Wave wave;
  loadWave(state, wave);
  StepPlace place = {state.belowLine.data() + DiffusionState::kHistory * kRows,
                     state.secondLine.data() + DiffusionState::kHistory * kRows,
                     state.chargeLine.data() + DiffusionState::kHistory * kRows};
  for (int begin = 0; begin < count; begin += 16) {
    const int end = std::min(count, begin + 16);
    const std::size_t base = Steps::offset(begin);
    const std::uint8_t* levelBytes = levels.bytes[0] + base;
    std::uint8_t* dotBytes = dots.bytes[0] + base;
    for (int s = begin; s < end; ++s) {
      stepAll<AtEdge>(wave, state, rows, u + s, place, levelBytes, dotBytes,
                      std::make_index_sequence<kVectors>());
      // The first lane is the last row. The other lanes land on places that later steps
      // overwrite.
      constexpr int kLast = (kVectors - 1) * kLanes;
      const int sumSlot = u + s - kLag * kRows + 2;
      const int chargeSlot = u + s - kLag * kRows + kLag;
      hn::StoreU(hn::Load(kFloats, place.below + kLast), kFloats,
                 state.sums + (AtEdge && sumSlot < 0 ? sumSlot + state.period : sumSlot));
      hn::StoreU(
          hn::Load(kInts, place.charges + kLast), kInts,
          state.charges + (AtEdge && chargeSlot < 0 ? chargeSlot + state.period : chargeSlot));
      place.below += kRows;
      place.second += kRows;
      place.charges += kRows;
      levelBytes += kSteps;
      dotBytes += kSteps;
    }
  }
  storeWave(wave, state);
  keepHistory(state.belowLine, count);
  keepHistory(state.secondLine, count);
  keepHistory(state.chargeLine, count);
}

// Brings the levels of a tile into step order.
template <std::size_t... I>
HWY_INLINE void gather(const DiffusionState& state, int u, Steps& levels,
                       std::index_sequence<I...>) {
  const std::uint8_t* first = state.levels + state.leadPx + u - 1;
  for (int g = 0; g < kGroups; ++g) {
    const auto rowAt = [&](int i) HWY_ATTR {
      return hn::LoadU(kBytes, first + rowOfByte(g * kGroupRows + i) * (state.pitch - kLag));
    };
    const Tile tile = transposed(Tile{{rowAt(static_cast<int>(I))...}});
    (hn::Store(tile.v[I], kBytes, levels.bytes[g] + I * kSteps), ...);
  }
}

template <std::size_t... I>
HWY_INLINE Tile dotRows(const Steps& dots, int group, std::index_sequence<I...>) {
  return transposed(Tile{{hn::Load(kBytes, dots.bytes[group] + I * kSteps)...}});
}

// Writes the dots of a tile whose lanes are all on pixels of the page.
template <std::size_t... I>
HWY_INLINE void scatter(const DiffusionState& state, int u, const Steps& dots,
                        std::index_sequence<I...>) {
  std::uint8_t* first = state.result + state.y * state.resultStride + u - 1;
  for (int g = 0; g < kGroups; ++g) {
    const Tile rows = dotRows(dots, g, AllRows());
    (hn::StoreU(
         rows.v[I], kBytes,
         first + rowOfDot(g * kGroupRows + static_cast<int>(I)) * (state.resultStride - kLag)),
     ...);
  }
}

// Copies the dots that are on pixels of row `y`: those of the columns from `x`.
void copyDots(const DiffusionState& state, const std::uint8_t* dots, int count, int y, int x) {
  if (y < 0 || y >= state.height) return;
  const int from = std::max(x, 0);
  const int to = std::min(x + count, state.width);
  if (from >= to) return;
  std::memcpy(state.result + y * state.resultStride + from, dots + (from - x),
              static_cast<std::size_t>(to - from));
}

void scatterAtEdge(const DiffusionState& state, int u, int count, const Steps& dots) {
  for (int g = 0; g < kGroups; ++g) {
    const Tile rows = dotRows(dots, g, AllRows());
    for (int i = 0; i < kGroupRows; ++i) {
      alignas(64) std::uint8_t bytes[kSteps];
      hn::Store(rows.v[i], kBytes, bytes);
      const int row = rowOfDot(g * kGroupRows + i);
      const int x = u - kLag * row - 1;
      copyDots(state, bytes, count, state.y + row, x);
      copyDots(state, bytes, std::min(count, -x), state.y + row - kRows, x + state.period);
    }
  }
}

RowMasks rowMasks(const DiffusionState& state) {
  RowMasks masks;
  masks.isFirstBlock = state.y == 0;
  for (int vector = 0; vector < kVectors; ++vector) {
    for (int lane = 0; lane < kLanes; ++lane) {
      const int y = state.y + rowOfLane(vector, lane);
      const auto isBorder = [&](int row) { return row == 0 || row == state.height - 1 ? -1 : 0; };
      masks.border[0][vector * kLanes + lane] = isBorder(y - kRows);
      masks.border[1][vector * kLanes + lane] = isBorder(y);
    }
  }
  return masks;
}

}  // namespace

int blockRowsVectors() {
  return kRows;
}

// One period: the rows of a block but for their last columns, and the last columns of the
// block before.
void diffuseBlockVectors(DiffusionState& state) {
  const RowMasks rows = rowMasks(state);
  const bool hasBorderRow = state.y == 0 || state.y + kRows >= state.height;
  // After the last row only what is left of the block before.
  const int lastRow = (state.height - 1) % kRows;
  const int steps =
      state.y < state.height ? state.period : kLag * lastRow + 1 + state.width - state.period;
  Steps levels;
  Steps dots;
  for (int u = 0; u < steps; u += kSteps) {
    const int count = std::min(kSteps, state.period - u);
    gather(state, u, levels, AllRows());
    const bool atEdge = hasBorderRow || u < kLag * kRows || u + kSteps > state.width;
    if (atEdge) {
      diffuseTile<true>(state, rows, u, count, levels, dots);
      scatterAtEdge(state, u, count, dots);
    } else {
      diffuseTile<false>(state, rows, u, count, levels, dots);
      scatter(state, u, dots, AllRows());
    }
  }
  for (int r = 0; r < kRows; ++r) {
    std::uint8_t* row = state.levels + r * state.pitch;
    std::memcpy(row, row + state.period, static_cast<std::size_t>(state.leadPx));
  }
}

}  // namespace wren::stencil::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::stencil {
namespace {

constexpr int kScalarBlockRows = 16;

int blockRowsScalar() {
  return kScalarBlockRows;
}

void diffuseRowScalar(const DiffusionState& state, const std::uint8_t* levels, int y) {
  std::uint8_t* out = state.result + y * state.resultStride;
  const bool isBorderRow = y == 0 || y == state.height - 1;
  float right = 0.0F;
  float second = 0.0F;
  float nextSecond = 0.0F;
  float twoTerms = 0.0F;
  float oneTerm = 0.0F;
  float firstTerm = 0.0F;
  std::int32_t chargeLeft = 0;
  for (int x = 0; x < state.width; ++x) {
    const float v = ((state.sums[x] + second) + right) + static_cast<float>(levels[x]);
    const bool white = v > state.threshold;
    const bool isBorder = isBorderRow || x == 0 || x == state.width - 1;
    const std::int32_t bits =
        isBorder ? kWhiteBits : kLeastWhiteBits + state.charges[x] + chargeLeft;
    const float error = white ? v - std::bit_cast<float>(bits) : v;
    chargeLeft = white ? kNeighbourCorrection : 0;
    state.charges[x] = chargeLeft;
    out[x] = white ? 255 : 0;
    right = error * kRight;
    second = nextSecond;
    nextSecond = error * kSecondRight;
    if (x >= 2) state.sums[x - 2] = twoTerms + error * kBelowSecondLeft;
    twoTerms = oneTerm + error * kBelowLeft;
    oneTerm = firstTerm + error * kBelow;
    firstTerm = error * kBelowRight;
  }
  if (state.width >= 2) state.sums[state.width - 2] = twoTerms;
  state.sums[state.width - 1] = oneTerm;
}

void diffuseBlockScalar(DiffusionState& state) {
  const int rows = std::min(kScalarBlockRows, state.height - state.y);
  for (int r = 0; r < rows; ++r) {
    diffuseRowScalar(state, state.levels + r * state.pitch + state.leadPx, state.y + r);
  }
}

constexpr KernelTable<int (*)()> kBlockRows = WREN_KERNEL_TABLE(blockRowsScalar, blockRowsVectors);
constexpr KernelTable<void (*)(DiffusionState&)> kDiffuseBlock =
    WREN_KERNEL_TABLE(diffuseBlockScalar, diffuseBlockVectors);

// Beyond each line: stores of whole vectors, loads of whole tiles.
constexpr int kPadding = 64;

}  // namespace

WavefrontDiffuser::WavefrontDiffuser(int width, int height, int threshold, std::uint8_t* result,
                                     std::ptrdiff_t resultStride)
    : blockRows_(kernelOf(kBlockRows)()), kernel_(kernelOf(kDiffuseBlock)) {
  const int lead = kLag * blockRows_;
  const int period = std::max(width + kGapSteps, lead + kPadding);
  const std::ptrdiff_t pitch = lead + std::ptrdiff_t{period} + kPadding;
  levels_.resize(static_cast<std::size_t>(pitch * blockRows_));
  sums_.resize(static_cast<std::size_t>(period) + kPadding);
  charges_.resize(static_cast<std::size_t>(period) + kPadding);
  state_ = {.width = width,
            .height = height,
            .threshold = static_cast<float>(threshold),
            .result = result,
            .resultStride = resultStride,
            .period = period,
            .leadPx = lead,
            .pitch = pitch,
            .levels = levels_.data(),
            .sums = sums_.data(),
            .charges = charges_.data()};
}

void WavefrontDiffuser::run() {
  kernel_(state_);
  state_.y += blockRows_;
  if (state_.y >= state_.height) kernel_(state_);
}

}  // namespace wren::stencil

#endif  // HWY_ONCE
