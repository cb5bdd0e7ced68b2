// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A lane that reaches the end of its row goes on with its row of the next block, after a few
// steps without a pixel that let its error terms run out. So the wavefront has no start or end
// within a page, and only some steps of each period have lanes at the edge of the page.

#include "stencil/diffusion_wavefront.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/vector_level.h"
#include "common/vector_targets.h"
#include "stencil/diffusion_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stencil/diffusion_wavefront.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "common/byte_transpose-inl.h"

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::stencil::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using wren::HWY_NAMESPACE::transposeBytes;

using Floats = hn::CappedTag<float, DiffusionState::kMaxLanes>;
using Ints = hn::RebindToSigned<Floats>;
using Bytes = hn::ScalableTag<std::uint8_t>;
using FloatVector = hn::Vec<Floats>;
using IntVector = hn::Vec<Ints>;
using ByteVector = hn::Vec<Bytes>;

constexpr Floats kFloats;
constexpr Ints kInts;
constexpr Bytes kBytes;

constexpr int kLanes = static_cast<int>(hn::MaxLanes(kFloats));
constexpr int kRows = DiffusionState::kRows;
constexpr int kVectors = kRows / kLanes;
static_assert(kRows == 16, "a tile is transposed in blocks of 16 bytes");

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

// The levels or dots of a tile, by step. Byte i of a 16-byte block is row i, and a vector holds
// the steps s, s + 16, ...
struct Steps {
  alignas(64) std::uint8_t bytes[kRows * kSteps];

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
  float* start;  // error terms for the pixel after the next, but for that of the next pixel
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

HWY_INLINE Edges loadEdges(const std::int32_t* masks) {
  return {hn::RebindMask(kFloats, hn::MaskFromVec(hn::LoadU(kInts, masks))),
          hn::RebindMask(kFloats, hn::MaskFromVec(hn::LoadU(kInts, masks + kRows)))};
}

// Where a step has the masks from: it needs none, they are stored because all blocks without a
// border row have the same, or they are computed.
enum class EdgeMasks { kNone, kStored, kComputed };

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

// (v1, v2, ..., next0): moves every lane down by one.
template <class D, class V>
HWY_INLINE V shiftedIn(D d, V v, V next) {
  if constexpr (kLanes == 4) {
    return hn::CombineShiftRightBytes<4>(d, next, v);
  } else {
    return hn::CombineShiftRightBytes<4>(d, hn::ConcatLowerUpper(d, next, v), v);
  }
}

HWY_INLINE FloatVector pixelsOf(const std::uint8_t* bytes) {
  const hn::Rebind<std::uint8_t, Floats> few;
  return hn::ConvertTo(kFloats, hn::PromoteTo(kInts, hn::LoadU(few, bytes)));
}

// What a step leaves for later ones.
struct Decided {
  FloatVector below;   // complete sums of error terms for the row below
  FloatVector second;  // error terms for the second pixel to the right
  IntVector charges;
};

// Decides the pixels of a vector. `chargesAbove` are the charges of the row above.
template <EdgeMasks Masks>
HWY_INLINE Decided decide(Lane& lane, IntVector chargesAbove, FloatVector pixels,
                          FloatVector threshold, const Edges& edges, const StepPlace& place) {
  const auto weight = [](float w) HWY_ATTR { return hn::Set(kFloats, w); };
  const FloatVector start = hn::Load(kFloats, place.start - 2 * kRows);
  const IntVector chargesLeft = hn::Load(kInts, place.charges - kRows);
  const FloatVector v = hn::Add(hn::Add(start, lane.right), pixels);
  const auto white = hn::Gt(v, threshold);
  FloatVector whiteLevel = hn::BitCast(
      kFloats, hn::Add(hn::Add(hn::Set(kInts, kLeastWhiteBits), chargesAbove), chargesLeft));
  if constexpr (Masks != EdgeMasks::kNone) {
    whiteLevel = hn::IfThenElse(edges.border, hn::Set(kFloats, kWhite), whiteLevel);
  }
  FloatVector error = hn::Sub(v, hn::IfThenElseZero(white, whiteLevel));
  if constexpr (Masks != EdgeMasks::kNone) error = hn::IfThenElseZero(edges.inside, error);
  const FloatVector below = hn::Add(lane.twoTerms, hn::Mul(error, weight(kBelowSecondLeft)));
  lane.right = hn::Mul(error, weight(kRight));
  lane.twoTerms = hn::Add(lane.oneTerm, hn::Mul(error, weight(kBelowLeft)));
  lane.oneTerm = hn::Add(lane.firstTerm, hn::Mul(error, weight(kBelow)));
  lane.firstTerm = hn::Mul(error, weight(kBelowRight));
  const IntVector charges =
      hn::IfThenElseZero(hn::RebindMask(kInts, white), hn::Set(kInts, kNeighbourCorrection));
  hn::Store(charges, kInts, place.charges);
  return {below, hn::Mul(error, weight(kSecondRight)), charges};
}

// Dots from charges: the packing saturates them to 255.
HWY_INLINE void storeDots(const IntVector* charges, std::uint8_t* bytes) {
  const hn::Repartition<std::int16_t, Ints> words;
  const hn::Rebind<std::uint8_t, decltype(words)> packed;
#pragma GCC unroll 8
  for (int i = 0; i < kVectors; i += 2) {
    hn::StoreU(hn::DemoteTo(packed, hn::ReorderDemote2To(words, charges[i], charges[i + 1])),
               packed, bytes + i * kLanes);
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

// The row above the block and the last row of the block, at their columns of this step.
struct OtherBlocks {
  const float* sumsAbove;
  const std::int32_t* chargesAbove;
  float* sums;
  std::int32_t* charges;
};

template <EdgeMasks Masks>
HWY_INLINE Edges edgesFor(const DiffusionState& state, const RowMasks& rows,
                          const std::int32_t* stored, int vector, int step) {
  if constexpr (Masks == EdgeMasks::kStored) return loadEdges(stored);
  if constexpr (Masks == EdgeMasks::kComputed) return edgesOf(state, rows, vector, step);
  return {hn::FirstN(kFloats, 0), hn::FirstN(kFloats, 0)};  // not used
}

template <EdgeMasks Masks, std::size_t... K>
HWY_INLINE void stepAll(Wave& wave, const DiffusionState& state, const RowMasks& rows, int u,
                        const std::int32_t* masks, const StepPlace& place,
                        const OtherBlocks& others, const std::uint8_t* levels, std::uint8_t* dots,
                        std::index_sequence<K...>) {
  FloatVector below[kVectors];
  FloatVector second[kVectors];
  IntVector charges[kVectors];
  const auto one = [&](auto index) HWY_ATTR {
    constexpr int k = decltype(index)::value;
    constexpr int kAbove = (k + kVectors - 1) % kVectors * kLanes;
    const Edges edges = edgesFor<Masks>(state, rows, masks + k * kLanes, k, u);
    IntVector chargesAbove = hn::Load(kInts, place.charges + kAbove - kLag * kRows);
    if constexpr (k == 0) {
      chargesAbove = shiftedIn(kInts, chargesAbove, hn::LoadU(kInts, others.chargesAbove));
    }
    const Decided decided =
        decide<Masks>(wave.lanes[k], chargesAbove, pixelsOf(levels + k * kLanes), wave.threshold,
                      edges, {place.start + k * kLanes, place.charges + k * kLanes});
    below[k] = decided.below;
    second[k] = decided.second;
    charges[k] = decided.charges;
    if constexpr (k > 0) {
      hn::Store(hn::Add(below[k - 1], second[k]), kFloats, place.start + k * kLanes);
    }
  };
  (one(std::integral_constant<int, static_cast<int>(K)>()), ...);
  constexpr int kLast = kVectors - 1;
  const FloatVector belowLast =
      shiftedIn(kFloats, below[kLast], hn::LoadU(kFloats, others.sumsAbove));
  hn::Store(hn::Add(belowLast, second[0]), kFloats, place.start);
  // The first lane is the last row. The other lanes land on places that later steps overwrite.
  hn::StoreU(below[kLast], kFloats, others.sums);
  hn::StoreU(charges[kLast], kInts, others.charges);
  storeDots(charges, dots);
}

// Built whole: the compilers give constructors that nobody wrote no vector instructions.
template <std::size_t... K>
HWY_INLINE Wave loadWave(const DiffusionState& state, std::index_sequence<K...>) {
  const auto value = [&](std::size_t i, std::size_t k) HWY_ATTR {
    return hn::LoadU(kFloats, state.values[i].data() + k * kLanes);
  };
  return {{Lane{value(0, K), value(1, K), value(2, K), value(3, K)}...},
          hn::Set(kFloats, state.threshold)};
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

// `slot` of a line of the period, which the last row or the row above may have passed already.
inline int slotIn(const DiffusionState& state, int slot) {
  if (slot < 0) return slot + state.period;
  return slot < state.period ? slot : slot - state.period;
}

// Stores the masks of a tile for blocks without a border row.
HWY_NOINLINE void storeMasks(const DiffusionState& state, int u, std::int32_t* masks) {
  const RowMasks noBorders = {};
  for (int s = 0; s < kSteps; ++s, masks += 2 * kRows) {
    for (int k = 0; k < kVectors; ++k) {
      const Edges edges = edgesOf(state, noBorders, k, u + s);
      const auto keep = [&](hn::Mask<Floats> mask, std::int32_t* to) HWY_ATTR {
        hn::StoreU(hn::VecFromMask(kInts, hn::RebindMask(kInts, mask)), kInts, to + k * kLanes);
      };
      keep(edges.inside, masks);
      keep(edges.border, masks + kRows);
    }
  }
}

// The steps from `u` of a period, at most `kSteps`.
template <EdgeMasks Masks>
HWY_NOINLINE void diffuseTile(DiffusionState& state, const RowMasks& rows,
                              const std::int32_t* masks, int u, int count, const Steps& levels,
                              Steps& dots) {
  Wave wave = loadWave(state, std::make_index_sequence<kVectors>());
  StepPlace place = {state.startLine.data() + DiffusionState::kHistory * kRows,
                     state.chargeLine.data() + DiffusionState::kHistory * kRows};
  float* const sums = state.sums;
  std::int32_t* const charges = state.charges;
  const auto slot = [&](int i) {
    if constexpr (Masks != EdgeMasks::kNone) return slotIn(state, i);
    return i;
  };
  for (int begin = 0; begin < count; begin += 16) {
    const int end = std::min(count, begin + 16);
    const std::uint8_t* levelBytes = levels.bytes + Steps::offset(begin);
    std::uint8_t* dotBytes = dots.bytes + Steps::offset(begin);
    for (int now = u + begin; now < u + end; ++now) {
      stepAll<Masks>(wave, state, rows, now, masks, place,
                     {.sumsAbove = sums + slot(now + 2),
                      .chargesAbove = charges + now,
                      .sums = sums + slot(now + 2 - kLag * kRows),
                      .charges = charges + slot(now + kLag - kLag * kRows)},
                     levelBytes, dotBytes, std::make_index_sequence<kVectors>());
      place.start += kRows;
      place.charges += kRows;
      levelBytes += kSteps;
      dotBytes += kSteps;
      masks += 2 * kRows;
    }
  }
  storeWave(wave, state);
  keepHistory(state.startLine, count);
  keepHistory(state.chargeLine, count);
}

// Brings the levels of a tile into step order.
HWY_INLINE void gather(const DiffusionState& state, int u, Steps& levels) {
  const std::uint8_t* first = state.levels + state.leadPx + u - 1;
  transposeBytes(
      kBytes,
      [&](std::size_t i) HWY_ATTR {
        return hn::LoadU(kBytes, first + rowOfByte(static_cast<int>(i)) * (state.pitch - kLag));
      },
      [&](std::size_t i, ByteVector v)
          HWY_ATTR { hn::Store(v, kBytes, levels.bytes + i * kSteps); });
}

// Brings the dots of a tile into row order: `store(i, v)` takes row `rowOfDot(i)`.
template <typename Store>
HWY_INLINE void transposeDots(const Steps& dots, Store store) {
  transposeBytes(
      kBytes, [&](std::size_t i) HWY_ATTR { return hn::Load(kBytes, dots.bytes + i * kSteps); },
      store);
}

// Writes the dots of a tile whose lanes are all on pixels of the page.
HWY_INLINE void scatter(const DiffusionState& state, int u, const Steps& dots) {
  std::uint8_t* first = state.result.row(state.y) + u - 1;
  transposeDots(dots, [&](std::size_t i, ByteVector v) HWY_ATTR {
    const int row = rowOfDot(static_cast<int>(i));
    hn::StoreU(v, kBytes, first + row * (state.result.strideBytes - kLag));
  });
}

// Copies the dots that are on pixels of row `y`: those of the columns from `x`.
void copyDots(const DiffusionState& state, const std::uint8_t* dots, int count, int y, int x) {
  if (y < 0 || y >= state.height) return;
  const int from = std::max(x, 0);
  const int to = std::min(x + count, state.width);
  if (from >= to) return;
  std::memcpy(state.result.row(y) + from, dots + (from - x), static_cast<std::size_t>(to - from));
}

void scatterAtEdge(const DiffusionState& state, int u, int count, const Steps& dots) {
  Steps rows;
  transposeDots(dots, [&](std::size_t i, ByteVector v)
                          HWY_ATTR { hn::Store(v, kBytes, rows.bytes + i * kSteps); });
  for (int i = 0; i < kRows; ++i) {
    const std::uint8_t* bytes = rows.bytes + i * kSteps;
    const int y = state.y + rowOfDot(i);
    const int x = u - kLag * rowOfDot(i) - 1;
    if (count == kSteps && x >= 0 && x <= state.width - kSteps && y < state.height) {
      hn::StoreU(hn::Load(kBytes, bytes), kBytes, state.result.row(y) + x);
      continue;
    }
    copyDots(state, bytes, count, y, x);
    if (x < 0) copyDots(state, bytes, std::min(count, -x), y - kRows, x + state.period);
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

// One period: the rows of a block but for their last columns, and the last columns of the
// block before.
void diffuseBlockVectors(DiffusionState& state) {
  const RowMasks rows = rowMasks(state);
  const bool hasBorderRow = state.y <= kRows || state.y + kRows >= state.height;
  // After the last row only what is left of the block before.
  const int lastRow = (state.height - 1) % kRows;
  const int steps =
      state.y < state.height ? state.period : kLag * lastRow + 1 + state.width - state.period;
  Steps levels;
  Steps dots;
  std::int32_t* masks = state.edgeMasks;
  for (int u = 0; u < steps; u += kSteps) {
    const int count = std::min(kSteps, state.period - u);
    gather(state, u, levels);
    if (u >= kLag * kRows && u + kSteps <= state.width && !hasBorderRow) {
      diffuseTile<EdgeMasks::kNone>(state, rows, masks, u, count, levels, dots);
      scatter(state, u, dots);
      continue;
    }
    if (hasBorderRow) {
      diffuseTile<EdgeMasks::kComputed>(state, rows, masks, u, count, levels, dots);
    } else {
      if (!state.hasEdgeMasks) storeMasks(state, u, masks);
      diffuseTile<EdgeMasks::kStored>(state, rows, masks, u, count, levels, dots);
      masks += 2 * kRows * kSteps;
    }
    scatterAtEdge(state, u, count, dots);
  }
  state.hasEdgeMasks = state.hasEdgeMasks || !hasBorderRow;
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

constexpr KernelTable<void (*)(DiffusionState&)> kDiffuseBlock =
    WREN_KERNEL_TABLE(diffuseBlockScalar, diffuseBlockVectors);

// Beyond each line: stores of whole vectors, loads of whole tiles.
constexpr int kPadding = 64;

}  // namespace

WavefrontDiffuser::WavefrontDiffuser(int width, int height, int threshold,
                                     const StencilDots& result)
    : kernel_(kernelOf(kDiffuseBlock)) {
  const int lead = kLag * kBlockRows;
  const int period = std::max(width + kGapSteps, lead + kPadding);
  const std::ptrdiff_t pitch = lead + std::ptrdiff_t{period} + kPadding;
  levels_.resize(static_cast<std::size_t>(pitch * kBlockRows));
  sums_.resize(static_cast<std::size_t>(period) + kPadding);
  charges_.resize(static_cast<std::size_t>(period) + kPadding);
  edgeMasks_.resize(std::size_t{2} * DiffusionState::kMaxEdgeSteps * kBlockRows);
  state_ = {.width = width,
            .height = height,
            .threshold = static_cast<float>(threshold),
            .result = result,
            .period = period,
            .leadPx = lead,
            .pitch = pitch,
            .levels = levels_.data(),
            .sums = sums_.data(),
            .charges = charges_.data(),
            .edgeMasks = edgeMasks_.data()};
}

void WavefrontDiffuser::run() {
  kernel_(state_);
  const int begun = state_.y;  // the rows of this block may lack their ends
  state_.y += kBlockRows;
  if (state_.y >= state_.height) kernel_(state_);
  state_.result.finished.report(
      static_cast<std::size_t>(state_.y >= state_.height ? state_.height : begun));
}

}  // namespace wren::stencil

#endif  // HWY_ONCE
