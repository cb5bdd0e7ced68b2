// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A lane that reaches the end of its row goes on with the row 16 below. The lag is such
// that this row, too, is `lag` columns behind the one above it. Error terms are stored in
// step order, 16 bytes per step, so the row above is always `16 * lag + 1` bytes back.

#include "dither/error_diffusion_wavefront.h"

#include "dither/byte_vector.h"
#include "dither/methods.h"

#ifdef WREN_HAS_BYTE_VECTORS

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "dither/error_buffer.h"
#include "dither/error_terms.h"
#include "dither/wavefront_lanes.h"

namespace wren::dither {

namespace {

static_assert(kLanes == ByteVector::kBytes && kTileSteps == kLanes);

// Which factor the tap `dx` of the pixel's own row has; the number of factors if there is no
// such tap.
template <const DiffusionKernel& Kernel>
constexpr std::size_t factorInRow(int dx) {
  constexpr DiffusionTaps kTaps = tapsOf(Kernel);
  constexpr ErrorFactors kFactors = errorFactorsOf(Kernel);
  for (std::size_t tap = 0; tap < kTaps.count; ++tap) {
    if (kTaps.tap[tap].dy == 0 && kTaps.tap[tap].dx == dx) return kFactors.indexOfTap[tap];
  }
  return kFactors.count;
}

template <const DiffusionKernel& Kernel>
class Wavefront {
 public:
  explicit Wavefront(const LevelRows& rows) : rows_(rows), skew_(rows.width()) {}

  bool allocate(Allocator allocator) {
    return buffer_.allocate(kFactors.count, kRowsAbove * rowAboveBytes(), allocator);
  }

  void run();

 private:
  static constexpr DiffusionTaps kTaps = tapsOf(Kernel);
  static constexpr ErrorFactors kFactors = errorFactorsOf(Kernel);
  static constexpr std::size_t kToNext = factorInRow<Kernel>(1);
  static constexpr std::size_t kToSecond = factorInRow<Kernel>(2);
  static constexpr auto kRowsAbove = static_cast<std::size_t>(kTaps.tap[kTaps.count - 1].dy);

  // Error terms from the pixels on the left in the same row.
  struct LeftTerms {
    ByteVector oneLeft = splat(0);
    ByteVector twoLeft = splat(0);
    ByteVector nextTwoLeft = splat(0);  // `twoLeft` of the next step
  };

  // Where the error terms of the rows 1, 2 and 3 above start for the tile; entry 0 is unused.
  using TermsAbove = std::array<const std::uint8_t*, kMaxReachRows + 1>;

  // Distance to the pixel above in a delay line.
  std::size_t rowAboveBytes() const { return kLanes * skew_.lag + 1; }
  std::size_t tileCount() const;

  void gather(ByteTile& levels);
  ByteVector gatherAcrossRows(std::size_t lane);
  void maskGaps(std::size_t lane, const std::array<Segment, 2>& segments, std::uint8_t byte);
  void diffuse(ByteTile& tile);
  void scatter(ByteTile& dots);
  void scatterAcrossRows(std::size_t lane, ByteVector dots);

  template <std::size_t Tap>
  static ByteVector addTermFromAbove(ByteVector level, const TermsAbove& above, std::size_t at,
                                     std::size_t lineStrideBytes);
  template <std::size_t... Taps>
  [[gnu::always_inline]] static inline ByteVector addTermsFromAbove(ByteVector level,
                                                                    const TermsAbove& above,
                                                                    std::size_t at,
                                                                    std::size_t lineStrideBytes,
                                                                    std::index_sequence<Taps...>);
  template <std::size_t... Factors>
  static void storeTerms(WideVector errors, ByteVector white, std::uint8_t* head,
                         std::size_t lineStrideBytes, LeftTerms& left,
                         std::index_sequence<Factors...>);

  const LevelRows& rows_;
  const Skew skew_;
  ErrorBuffer buffer_;
  std::array<Lane, kLanes> lanes_;
  LeftTerms left_;

  // For each step of the tile 255 in the lanes that have a pixel, 0 in the others: their
  // error terms are 0.
  std::array<std::array<std::uint8_t, kLanes>, kTileSteps> pixelMask_;
};

// Until the last pixel of the last row.
template <const DiffusionKernel& Kernel>
std::size_t Wavefront<Kernel>::tileCount() const {
  const std::size_t last = rows_.height() - 1;
  const std::size_t start = last / kLanes * skew_.period + last % kLanes * skew_.lag;
  return roundedUp(start + rows_.width(), kTileSteps) / kTileSteps;
}

// Sets the mask of the steps in which a lane has no pixel.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::maskGaps(std::size_t lane, const std::array<Segment, 2>& segments,
                                 std::uint8_t byte) {
  std::size_t step = 0;
  for (const Segment& segment : segments) {
    for (; step < segment.step; ++step) pixelMask_[step][lane] = byte;
    step += segment.count;
  }
  for (; step < kTileSteps; ++step) pixelMask_[step][lane] = byte;
}

template <const DiffusionKernel& Kernel>
ByteVector Wavefront<Kernel>::gatherAcrossRows(std::size_t lane) {
  std::array<std::uint8_t, kTileSteps> bytes = {};
  lanes_[lane].openNextRow(rows_, skew_);
  const auto segments = lanes_[lane].segments(rows_.width(), skew_);
  for (const Segment& segment : segments) {
    if (segment.count > 0) std::memcpy(bytes.data() + segment.step, segment.pixels, segment.count);
  }
  maskGaps(lane, segments, 0);
  return loadBytes(bytes.data());
}

// Loads the levels of the tile, one lane per row, and transposes them to one step per row.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::gather(ByteTile& levels) {
  for (std::size_t i = 0; i < kLanes; ++i) {
    levels[i] = lanes_[i].isInsideRow() ? loadBytes(lanes_[i].pixels()) : gatherAcrossRows(i);
  }
  transpose(levels);
}

template <const DiffusionKernel& Kernel>
template <std::size_t Tap>
ByteVector Wavefront<Kernel>::addTermFromAbove(ByteVector level, const TermsAbove& above,
                                               std::size_t at, std::size_t lineStrideBytes) {
  constexpr DiffusionTap kTap = kTaps.tap[Tap];
  if constexpr (kTap.dy == 0) {
    return level;
  } else {
    constexpr std::ptrdiff_t kColumn = (kMaxReachColumns - kTap.dx) * std::ptrdiff_t{kLanes};
    const std::uint8_t* line = above[kTap.dy] + kFactors.indexOfTap[Tap] * lineStrideBytes;
    return addSaturatedSigned(level, loadBytes(line + kColumn + at));
  }
}

// The taps backwards are the pixels above in scan order.
template <const DiffusionKernel& Kernel>
template <std::size_t... Taps>
ByteVector Wavefront<Kernel>::addTermsFromAbove(ByteVector level, const TermsAbove& above,
                                                std::size_t at, std::size_t lineStrideBytes,
                                                std::index_sequence<Taps...>) {
  ((level = addTermFromAbove<kTaps.count - 1 - Taps>(level, above, at, lineStrideBytes)), ...);
  return level;
}

template <const DiffusionKernel& Kernel>
template <std::size_t... Factors>
void Wavefront<Kernel>::storeTerms(WideVector errors, ByteVector white, std::uint8_t* head,
                                   std::size_t lineStrideBytes, LeftTerms& left,
                                   std::index_sequence<Factors...>) {
  const std::array<ByteVector, sizeof...(Factors)> terms = {
      negateWhere(white, multiplyQ15(errors, kFactors.factor[Factors]))...};
  (storeBytes(terms[Factors], head + Factors * lineStrideBytes), ...);
  left.twoLeft = left.nextTwoLeft;
  if constexpr (kToNext < kFactors.count) left.oneLeft = terms[kToNext];
  if constexpr (kToSecond < kFactors.count) left.nextTwoLeft = terms[kToSecond];
}

// Turns the levels of a tile, one step per row, into 255 for white and 0 for black.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::diffuse(ByteTile& tile) {
  constexpr auto kAllTaps = std::make_index_sequence<kTaps.count>();
  constexpr auto kAllFactors = std::make_index_sequence<kFactors.count>();
  const std::size_t lineStride = buffer_.lineStrideBytes();
  std::uint8_t* head = buffer_.head();
  TermsAbove above;
  above.fill(head);
  for (std::size_t dy = 1; dy <= kRowsAbove; ++dy) {
    above[dy] = buffer_.delayed(dy * rowAboveBytes() + ErrorBuffer::kReachBytes);
  }
  LeftTerms left = left_;
  const ByteVector offset = splat(kLevelOffset);
  for (std::size_t step = 0; step < kTileSteps; ++step) {
    const std::size_t at = step * kLanes;
    ByteVector level = tile[step] ^ offset;
    level = addTermsFromAbove(level, above, at, lineStride, kAllTaps);
    level = addSaturatedSigned(level, left.twoLeft);
    if constexpr (kToNext < kFactors.count) level = addSaturatedSigned(level, left.oneLeft);
    const ByteVector white = greaterThanZero(level);
    const ByteVector error = (level ^ offset ^ white) & loadBytes(pixelMask_[step].data());
    storeTerms(widen(error), white, head + at, lineStride, left, kAllFactors);
    tile[step] = white;
  }
  left_ = left;
  buffer_.advance();
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatterAcrossRows(std::size_t lane, ByteVector dots) {
  std::array<std::uint8_t, kTileSteps> bytes = {};
  storeBytes(dots, bytes.data());
  const auto segments = lanes_[lane].segments(rows_.width(), skew_);
  for (const Segment& segment : segments) {
    if (segment.count > 0) std::memcpy(segment.pixels, bytes.data() + segment.step, segment.count);
  }
  maskGaps(lane, segments, 255);
}

// Transposes the dots back to one lane per row, writes them, and moves all lanes to the next
// tile.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatter(ByteTile& dots) {
  transpose(dots);
  const ByteVector flip = splat(rows_.flip());
  for (std::size_t i = 0; i < kLanes; ++i) {
    Lane& lane = lanes_[i];
    if (lane.isInsideRow()) {
      storeBytes(dots[i] ^ flip, lane.pixels());
      lane.advanceInsideRow();
    } else {
      scatterAcrossRows(i, dots[i] ^ flip);
      lane.advance(skew_);
    }
  }
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::run() {
  for (std::size_t i = 0; i < kLanes; ++i) lanes_[i] = Lane(rows_, i, skew_);
  for (auto& step : pixelMask_) step.fill(255);
  const std::size_t tiles = tileCount();
  for (std::size_t i = 0; i < tiles; ++i) {
    ByteTile tile;
    gather(tile);
    diffuse(tile);
    scatter(tile);
  }
}

template <const DiffusionKernel& Kernel>
bool diffuseWavefront(const LevelRows& rows, Allocator allocator) {
  if (rows.width() == 0 || rows.height() == 0) return true;
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

DiffuseFunction wavefrontKernel(std::size_t method) {
  static constexpr auto kKernels = kernelsOfMethods(std::make_index_sequence<kMethods.size()>());
  return kKernels[method];
}

}  // namespace wren::dither

#else

namespace wren::dither {

DiffuseFunction wavefrontKernel(std::size_t /*method*/) {
  return nullptr;
}

}  // namespace wren::dither

#endif  // WREN_HAS_BYTE_VECTORS
