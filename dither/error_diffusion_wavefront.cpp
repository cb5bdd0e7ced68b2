// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A lane that reaches the end of its row goes on with the next row that no lane has. The lag
// is such that this row, too, is `lag` columns behind the one above it. Error terms are
// stored in step order, one vector per step, so the row above is always
// `lanes * lag + 1` bytes back.

#include "dither/error_diffusion_wavefront.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "common/vector_level.h"
#include "common/vector_targets.h"
#include "dither/error_buffer.h"
#include "dither/error_diffusion_scalar.h"
#include "dither/error_terms.h"
#include "dither/methods.h"
#include "dither/wavefront_lanes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dither/error_diffusion_wavefront.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "common/byte_transpose-inl.h"

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::dither::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using wren::HWY_NAMESPACE::transposeBytes;

using Bytes = hn::ScalableTag<std::uint8_t>;
using SignedBytes = hn::RebindToSigned<Bytes>;
using Words = hn::RepartitionToWide<Bytes>;
using ByteVector = hn::Vec<Bytes>;
using SignedVector = hn::Vec<SignedBytes>;

constexpr Bytes kBytes;
constexpr SignedBytes kSignedBytes;
constexpr Words kWords;

// Rows that are processed at once, one per byte of a vector.
constexpr std::size_t kLanes = hn::MaxLanes(kBytes);
// The interleaving instructions stay within blocks of this size.
constexpr std::size_t kBlockLanes = 16;
static_assert(kTileSteps == kBlockLanes);
// Each lane has one row, and one may have begun its next; 8 rows may wait to be taken.
static_assert(kLanes + 1 + 8 <= Page::kMinDotRows);

// The levels or dots of a tile: vector i holds the pixels of all rows in step i. Transposed,
// vector i holds 16 pixels of row i, of row i + 16 and so on, one block each.
struct Tile {
  ByteVector v[kTileSteps];
};

// 16 bytes from each of `rows[0]`, `rows[16]`, ...
template <class D>
HWY_INLINE hn::Vec<D> loadBlocks(D d, const std::uint8_t* const* rows) {
  if constexpr (hn::MaxLanes(D()) == kBlockLanes) {
    return hn::LoadU(d, rows[0]);
  } else {
    const hn::Half<D> half;
    return hn::Combine(d, loadBlocks(half, rows + hn::MaxLanes(half)), loadBlocks(half, rows));
  }
}

// 16 bytes to each of `rows[0]`, `rows[16]`, ...
template <class D>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, std::uint8_t* const* rows) {
  if constexpr (hn::MaxLanes(D()) == kBlockLanes) {
    hn::StoreU(v, d, rows[0]);
  } else {
    const hn::Half<D> half;
    storeBlocks(half, hn::LowerHalf(half, v), rows);
    storeBlocks(half, hn::UpperHalf(half, v), rows + hn::MaxLanes(half));
  }
}

// Absolute errors as 16-bit numbers: those of even lanes, and those of odd lanes in the
// upper byte.
struct WideErrors {
  hn::Vec<Words> even;
  hn::Vec<Words> odd;
};

HWY_INLINE WideErrors widened(ByteVector errors) {
  const auto words = hn::BitCast(kWords, errors);
  const auto low = hn::Set(kWords, 0xFF);
  return {hn::And(words, low), hn::AndNot(low, words)};
}

// errors * factor / 32768, rounded down. A product in the upper byte has its fraction in the
// lower byte.
HWY_INLINE ByteVector multiplyQ15(const WideErrors& errors, std::int16_t factor) {
  const auto doubled = hn::Set(kWords, static_cast<std::uint16_t>(2 * factor));
  const auto even = hn::MulHigh(errors.even, doubled);
  const auto odd = hn::AndNot(hn::Set(kWords, 0xFF), hn::MulHigh(errors.odd, doubled));
  return hn::BitCast(kBytes, hn::Or(even, odd));
}

// Which error term the tap `dx` of the pixel's own row has; their number if there is no such
// tap.
template <const DiffusionKernel& Kernel>
constexpr std::size_t termInRow(int dx) {
  constexpr DiffusionTaps kTaps = tapsOf(Kernel);
  constexpr ErrorFactors kFactors = errorFactorsOf(Kernel);
  for (std::size_t tap = 0; tap < kTaps.count; ++tap) {
    if (kTaps.tap[tap].dy == 0 && kTaps.tap[tap].dx == dx) return kFactors.indexOfTap[tap];
  }
  return kFactors.count;
}

// The 16 pixels of a lane that is not inside its row, in the middle. The bytes around them
// belong to the ends of the same rows: 16 bytes are copied at a time, because copies of a
// length that varies are slow. Pixels between two rows are undefined.
class EdgePixels {
 public:
  /// The pixels of the tile in the lane's row and in its next row.
  std::array<Segment, 2> segments;

  std::uint8_t* tile() { return bytes_.data() + kTileSteps; }

  void load(const Segment& segment) {
    std::memcpy(placeOf(segment), segment.pixels - before(segment), kTileSteps);
  }
  void store(const Segment& segment) {
    std::memcpy(segment.pixels - before(segment), placeOf(segment), kTileSteps);
  }

 private:
  // A segment from step 0 on is the end of a row: it is copied with the pixels before it.
  static std::size_t before(const Segment& segment) {
    return segment.step == 0 ? kTileSteps - segment.count : 0;
  }
  std::uint8_t* placeOf(const Segment& segment) { return tile() + segment.step - before(segment); }

  std::array<std::uint8_t, 3 * kTileSteps> bytes_;
};

template <const DiffusionKernel& Kernel>
class Wavefront {
 public:
  explicit Wavefront(const LevelRows& rows)
      : rows_(rows), skew_(rows.width(), kLanes), buffer_(kLanes) {}

  bool allocate(Allocator allocator) {
    return buffer_.allocate(kTermCount, kRowsAbove * rowAboveBytes(), allocator);
  }

  void run();

 private:
  static constexpr DiffusionTaps kTaps = tapsOf(Kernel);
  static constexpr ErrorFactors kFactors = errorFactorsOf(Kernel);
  static constexpr TermSteps kSteps = termStepsOf(Kernel);
  static constexpr std::size_t kTermCount = kFactors.count;
  static constexpr std::size_t kToNext = termInRow<Kernel>(1);
  static constexpr std::size_t kToSecond = termInRow<Kernel>(2);
  static constexpr auto kRowsAbove = static_cast<std::size_t>(kTaps.tap[kTaps.count - 1].dy);

  // Error terms from the pixels on the left in the same row.
  struct LeftTerms {
    SignedVector oneLeft;
    SignedVector twoLeft;
    SignedVector nextTwoLeft;  // `twoLeft` of the next step
  };

  // The absolute error terms of a step.
  struct Terms {
    ByteVector v[kTermCount];
  };

  // Where the error terms of the rows 1, 2 and 3 above start for the tile; entry 0 is unused.
  using TermsAbove = std::array<const std::uint8_t*, kMaxReachRows + 1>;

  // Distance to the pixel above in a delay line.
  std::size_t rowAboveBytes() const { return kLanes * skew_.lag + 1; }
  std::size_t tileCount() const;

  void findEdgeLanes();
  HWY_INLINE void gather(Tile& levels);
  void gatherAcrossRows(std::size_t lane);
  HWY_INLINE void diffuse(Tile& tile);
  HWY_INLINE void scatter(const Tile& dots);
  void scatterAcrossRows(std::size_t lane);
  void advance();
  std::size_t edgeLane(std::size_t i) const { return (firstEdge_ + i) % kLanes; }

  template <std::size_t Tap>
  static HWY_INLINE SignedVector addTermFromAbove(SignedVector level, const TermsAbove& above,
                                                  std::size_t at, std::size_t lineStrideBytes);
  template <std::size_t... Taps>
  static HWY_INLINE SignedVector addTermsFromAbove(SignedVector level, const TermsAbove& above,
                                                   std::size_t at, std::size_t lineStrideBytes,
                                                   std::index_sequence<Taps...>);
  template <std::size_t Term>
  static HWY_INLINE void setTerm(ByteVector error, const WideErrors& wide, Terms& terms);
  template <std::size_t... I>
  static HWY_INLINE void storeTerms(ByteVector error, ByteVector white, std::uint8_t* head,
                                    std::size_t lineStrideBytes, LeftTerms& left,
                                    std::index_sequence<I...>);

  const LevelRows& rows_;
  const Skew skew_;
  ErrorBuffer buffer_;
  std::array<Lane, kLanes> lanes_;
  std::ptrdiff_t step_ = 0;  // first step of the tile

  // Lanes that are not inside their row for the whole tile: `edgeCount_` lanes from
  // `firstEdge_` on, modulo `kLanes`. Lanes reach the end of a row in turn, because each is
  // behind the one above it.
  std::size_t firstEdge_ = 0;
  std::size_t edgeCount_ = kLanes;

  // The 16 pixels of each lane: in its row, or in `edgePixels_`.
  std::array<std::uint8_t*, kLanes> pixels_;

  // `oneLeft`, `twoLeft` and `nextTwoLeft` between two tiles.
  std::array<std::array<std::int8_t, kLanes>, 3> left_ = {};

  // Each lane has pixels in the steps before `rowEnd_` and from `rowStart_` on: its row and its
  // next row. In the other steps of the tile its error terms are 0.
  std::array<std::uint8_t, kLanes> rowEnd_;
  std::array<std::uint8_t, kLanes> rowStart_;

  std::array<EdgePixels, kLanes> edgePixels_;
};

// Until the last pixel of the last row.
template <const DiffusionKernel& Kernel>
std::size_t Wavefront<Kernel>::tileCount() const {
  const std::size_t last = rows_.height() - 1;
  const std::size_t start = last / kLanes * skew_.period + last % kLanes * skew_.lag;
  return roundedUp(start + rows_.width(), kTileSteps) / kTileSteps;
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::gatherAcrossRows(std::size_t lane) {
  EdgePixels& edge = edgePixels_[lane];
  lanes_[lane].openNextRow(step_, rows_, skew_);
  edge.segments = lanes_[lane].segments(step_, rows_.width(), skew_);
  rowEnd_[lane] = 0;
  rowStart_[lane] = kTileSteps;
  for (const Segment& segment : edge.segments) {
    if (segment.count == 0) continue;
    edge.load(segment);
    if (segment.step == 0) {
      rowEnd_[lane] = static_cast<std::uint8_t>(segment.count);
    } else {
      rowStart_[lane] = static_cast<std::uint8_t>(segment.step);
    }
  }
  pixels_[lane] = edge.tile();
}

// Lanes whose row ends in this tile.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::findEdgeLanes() {
  while (edgeCount_ < kLanes && !lanes_[edgeLane(edgeCount_)].isInsideRow(step_)) ++edgeCount_;
}

// Loads the levels of the tile and transposes them to one step per vector.
template <const DiffusionKernel& Kernel>
HWY_INLINE void Wavefront<Kernel>::gather(Tile& levels) {
  for (std::size_t i = 0; i < edgeCount_; ++i) gatherAcrossRows(edgeLane(i));
  transposeBytes(
      kBytes, [this](std::size_t i) HWY_ATTR { return loadBlocks(kBytes, pixels_.data() + i); },
      [&levels](std::size_t i, ByteVector v) HWY_ATTR { levels.v[i] = v; });
}

template <const DiffusionKernel& Kernel>
template <std::size_t Tap>
HWY_INLINE SignedVector Wavefront<Kernel>::addTermFromAbove(SignedVector level,
                                                            const TermsAbove& above, std::size_t at,
                                                            std::size_t lineStrideBytes) {
  constexpr DiffusionTap kTap = kTaps.tap[Tap];
  if constexpr (kTap.dy == 0) {
    return level;
  } else {
    constexpr std::size_t kColumn = static_cast<std::size_t>(kMaxReachColumns - kTap.dx) * kLanes;
    const std::uint8_t* line = above[kTap.dy] + kFactors.indexOfTap[Tap] * lineStrideBytes;
    const ByteVector term = hn::LoadU(kBytes, line + kColumn + at);
    return hn::SaturatedAdd(level, hn::BitCast(kSignedBytes, term));
  }
}

// The taps backwards are the pixels above in scan order.
template <const DiffusionKernel& Kernel>
template <std::size_t... Taps>
HWY_INLINE SignedVector Wavefront<Kernel>::addTermsFromAbove(SignedVector level,
                                                             const TermsAbove& above,
                                                             std::size_t at,
                                                             std::size_t lineStrideBytes,
                                                             std::index_sequence<Taps...>) {
  ((level = addTermFromAbove<kTaps.count - 1 - Taps>(level, above, at, lineStrideBytes)), ...);
  return level;
}

template <const DiffusionKernel& Kernel>
template <std::size_t Term>
HWY_INLINE void Wavefront<Kernel>::setTerm(ByteVector error, const WideErrors& wide, Terms& terms) {
  constexpr TermStep kStep = kSteps[Term];
  if constexpr (!kStep.isShift) {
    terms.v[Term] = multiplyQ15(wide, kFactors.factor[Term]);
  } else {
    terms.v[Term] = hn::ShiftRight<kStep.shift>(kStep.ofError ? error : terms.v[kStep.term]);
  }
}

// The terms of white pixels, whose level was too low, are negative: -v is (v ^ white) - white.
template <const DiffusionKernel& Kernel>
template <std::size_t... I>
HWY_INLINE void Wavefront<Kernel>::storeTerms(ByteVector error, ByteVector white,
                                              std::uint8_t* head, std::size_t lineStrideBytes,
                                              LeftTerms& left, std::index_sequence<I...>) {
  const WideErrors wide = widened(error);
  Terms terms;
  (setTerm<I>(error, wide, terms), ...);
  ((terms.v[I] = hn::Sub(hn::Xor(terms.v[I], white), white)), ...);
  (hn::StoreU(terms.v[I], kBytes, head + I * lineStrideBytes), ...);
  left.twoLeft = left.nextTwoLeft;
  if constexpr (kToNext < kTermCount) left.oneLeft = hn::BitCast(kSignedBytes, terms.v[kToNext]);
  left.nextTwoLeft = hn::BitCast(kSignedBytes, terms.v[kToSecond]);
}

// Turns the levels of a tile, one step per vector, into 255 for white and 0 for black.
template <const DiffusionKernel& Kernel>
HWY_INLINE void Wavefront<Kernel>::diffuse(Tile& tile) {
  static_assert(kToSecond < kTermCount, "every kernel has a tap two pixels to the right");
  constexpr auto kAllTaps = std::make_index_sequence<kTaps.count>();
  constexpr auto kAllTerms = std::make_index_sequence<kTermCount>();
  const std::size_t lineStride = buffer_.lineStrideBytes();
  std::uint8_t* head = buffer_.head();
  TermsAbove above;
  above.fill(head);
  for (std::size_t dy = 1; dy <= kRowsAbove; ++dy) {
    above[dy] = buffer_.delayed(dy * rowAboveBytes() + buffer_.reachBytes());
  }
  LeftTerms left = {hn::LoadU(kSignedBytes, left_[0].data()),
                    hn::LoadU(kSignedBytes, left_[1].data()),
                    hn::LoadU(kSignedBytes, left_[2].data())};
  const ByteVector offset = hn::Set(kBytes, kLevelOffset);
  // Steps since the end of the row, as an unsigned byte: a lane is between two rows where they
  // are fewer than the length of the gap.
  const ByteVector rowEnd = hn::LoadU(kBytes, rowEnd_.data());
  const ByteVector gapLength = hn::Sub(hn::LoadU(kBytes, rowStart_.data()), rowEnd);
  ByteVector sinceEnd = hn::Sub(hn::Zero(kBytes), rowEnd);
  for (std::size_t step = 0; step < kTileSteps; ++step) {
    const std::size_t at = step * kLanes;
    SignedVector level = hn::BitCast(kSignedBytes, hn::Xor(tile.v[step], offset));
    level = addTermsFromAbove(level, above, at, lineStride, kAllTaps);
    level = hn::SaturatedAdd(level, left.twoLeft);
    if constexpr (kToNext < kTermCount) level = hn::SaturatedAdd(level, left.oneLeft);
    const auto isWhite = hn::Gt(level, hn::Zero(kSignedBytes));
    const ByteVector white = hn::BitCast(kBytes, hn::VecFromMask(kSignedBytes, isWhite));
    // The level of a black pixel, 255 - level of a white one.
    const ByteVector distance = hn::Xor(hn::Xor(hn::BitCast(kBytes, level), offset), white);
    const ByteVector gapLeft = hn::SaturatedSub(gapLength, sinceEnd);
    const ByteVector error = hn::IfThenElseZero(hn::Eq(gapLeft, hn::Zero(kBytes)), distance);
    sinceEnd = hn::Add(sinceEnd, hn::Set(kBytes, 1));
    storeTerms(error, white, head + at, lineStride, left, kAllTerms);
    tile.v[step] = white;
  }
  hn::StoreU(left.oneLeft, kSignedBytes, left_[0].data());
  hn::StoreU(left.twoLeft, kSignedBytes, left_[1].data());
  hn::StoreU(left.nextTwoLeft, kSignedBytes, left_[2].data());
  buffer_.advance();
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatterAcrossRows(std::size_t lane) {
  EdgePixels& edge = edgePixels_[lane];
  for (const Segment& segment : edge.segments) {
    if (segment.count > 0) edge.store(segment);
  }
  lanes_[lane].closeRow(step_, rows_, skew_);
}

// Transposes the dots back to one row per block and writes them.
template <const DiffusionKernel& Kernel>
HWY_INLINE void Wavefront<Kernel>::scatter(const Tile& dots) {
  const ByteVector flip = hn::Set(kBytes, rows_.flip());
  transposeBytes(
      kBytes, [&dots](std::size_t i) HWY_ATTR { return dots.v[i]; },
      [this, flip](std::size_t i, ByteVector v)
          HWY_ATTR { storeBlocks(kBytes, hn::Xor(v, flip), pixels_.data() + i); });
  for (std::size_t i = 0; i < edgeCount_; ++i) scatterAcrossRows(edgeLane(i));
}

// Moves all lanes to the next tile. The lanes that have passed the start of their row are
// done with the edge.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::advance() {
  step_ += std::ptrdiff_t{kTileSteps};
  for (std::uint8_t*& pixels : pixels_) pixels += kTileSteps;
  while (edgeCount_ > 0 && lanes_[firstEdge_].isInsideRow(step_)) {
    pixels_[firstEdge_] = lanes_[firstEdge_].pixels(step_);
    rowEnd_[firstEdge_] = kTileSteps;
    rowStart_[firstEdge_] = kTileSteps;
    firstEdge_ = edgeLane(1);
    --edgeCount_;
  }
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::run() {
  for (std::size_t i = 0; i < kLanes; ++i) lanes_[i] = Lane(rows_, i, skew_);
  const std::size_t tiles = tileCount();
  for (std::size_t i = 0; i < tiles; ++i) {
    Tile tile;
    findEdgeLanes();
    gather(tile);
    diffuse(tile);
    scatter(tile);
    advance();
  }
  rows_.finish(rows_.height());
}

template <const DiffusionKernel& Kernel>
bool diffuseWavefront(const LevelRows& rows, Allocator allocator) {
  if (rows.width() == 0 || rows.height() == 0) return true;
  // Each row begins and ends in different tiles.
  if (rows.width() < kTileSteps) return diffuseScalar(Kernel, rows, allocator);
  Wavefront<Kernel> wavefront(rows);
  if (!wavefront.allocate(allocator)) return false;
  wavefront.run();
  return true;
}

template <std::size_t Index>
constexpr DiffuseFunction kernelOfMethod() {
  if constexpr (kMethods[Index].isVectorised) {
    return diffuseWavefront<*kMethods[Index].diffusion>;
  } else {
    return nullptr;
  }
}

template <std::size_t... Indexes>
constexpr std::array<DiffuseFunction, kMethods.size()> kernelsOfMethods(
    std::index_sequence<Indexes...>) {
  return {kernelOfMethod<Indexes>()...};
}

}  // namespace

DiffuseFunction kernelAt(std::size_t method) {
  static constexpr auto kKernels = kernelsOfMethods(std::make_index_sequence<kMethods.size()>());
  return kKernels[method];
}

}  // namespace wren::dither::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::dither {
namespace {

DiffuseFunction noKernel(std::size_t /*method*/) {
  return nullptr;
}

constexpr KernelTable<DiffuseFunction (*)(std::size_t)> kKernelAt =
    WREN_KERNEL_TABLE(noKernel, kernelAt);

}  // namespace

DiffuseFunction wavefrontKernel(std::size_t method) {
  return kernelOf(kKernelAt)(method);
}

}  // namespace wren::dither

#endif  // HWY_ONCE
