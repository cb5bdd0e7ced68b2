// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/error_diffusion_wavefront.h"

#include "dither/byte_vector.h"

#ifdef WREN_HAS_BYTE_VECTORS

#include <cstring>
#include <utility>

#include "dither/error_buffer.h"
#include "dither/error_terms.h"
#include "dither/wavefront_lanes.h"

namespace {

static_assert(kLanes == ByteVector::kBytes && kChunk == kLanes);

// The taps of the pixel's own row: which share each sends, if there is one.
template <const DiffusionKernel& Kernel>
constexpr std::size_t shareAlongRow(int dx) {
  for (std::size_t tap = 0; tap < Kernel.tapCount; ++tap) {
    if (Kernel.taps[tap].dy == 0 && Kernel.taps[tap].dx == dx) return sharesOf(Kernel).ofTap[tap];
  }
  return sharesOf(Kernel).count;
}

template <const DiffusionKernel& Kernel>
class Wavefront {
 public:
  explicit Wavefront(const LevelRows& rows) : rows_(rows), slant_(rows.width()) {}

  bool allocate(BitmapAllocator allocator) {
    return ring_.allocate(kShares.count, kRowsAbove * rowAboveBytes(), allocator);
  }

  void run();

 private:
  static constexpr DiffusionShares kShares = sharesOf(Kernel);
  static constexpr std::size_t kNext = shareAlongRow<Kernel>(1);
  static constexpr std::size_t kSecond = shareAlongRow<Kernel>(2);
  static constexpr auto kRowsAbove = static_cast<std::size_t>(Kernel.taps[Kernel.tapCount - 1].dy);

  // What the pixels to the left have sent along their rows.
  struct Carried {
    ByteVector toNext = splat(0);        // from one to the left
    ByteVector toSecond = splat(0);      // from two to the left
    ByteVector toSecondSoon = splat(0);  // from one to the left, for the next step
  };

  // Where the shares of the rows 1, 2 and 3 above the chunk's start begin.
  using Above = std::array<const std::uint8_t*, kMaxReachRows + 1>;

  // How far back in the string of shares the pixel above stands.
  std::size_t rowAboveBytes() const { return kLanes * slant_.lag + 1; }
  std::size_t chunkCount() const;

  void gather(ByteSquare& levels);
  ByteVector gatherEdge(std::size_t lane);
  void maskGaps(std::size_t lane, const std::array<Piece, 2>& pieces, std::uint8_t byte);
  void diffuse(ByteSquare& square);
  void scatter(ByteSquare& dots);
  void scatterEdge(std::size_t lane, ByteVector dots);

  template <std::size_t Tap>
  static ByteVector collect(ByteVector level, const Above& above, std::size_t at,
                            std::size_t spanBytes);
  template <std::size_t... Taps>
  static ByteVector collectAll(ByteVector level, const Above& above, std::size_t at,
                               std::size_t spanBytes, std::index_sequence<Taps...>);
  template <std::size_t... Shares>
  static void send(WideVector errors, ByteVector white, std::uint8_t* now, std::size_t spanBytes,
                   Carried& carried, std::index_sequence<Shares...>);

  const LevelRows& rows_;
  const Slant slant_;
  ShareRing ring_;
  std::array<Lane, kLanes> lanes_;
  Carried carried_;

  // For each step 255 in the lanes that have a pixel, 0 in the others: those
  // send nothing.
  std::array<std::array<std::uint8_t, kLanes>, kChunk> mask_;
};

// Until the last row has sent its last pixel.
template <const DiffusionKernel& Kernel>
std::size_t Wavefront<Kernel>::chunkCount() const {
  const std::size_t last = rows_.height() - 1;
  const std::size_t start = last / kLanes * slant_.period + last % kLanes * slant_.lag;
  return roundedUp(start + rows_.width(), kChunk) / kChunk;
}

// Sets the mask of the steps in which a lane has no pixel.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::maskGaps(std::size_t lane, const std::array<Piece, 2>& pieces,
                                 std::uint8_t byte) {
  std::size_t step = 0;
  for (const Piece& piece : pieces) {
    for (; step < piece.step; ++step) mask_[step][lane] = byte;
    step += piece.count;
  }
  for (; step < kChunk; ++step) mask_[step][lane] = byte;
}

template <const DiffusionKernel& Kernel>
ByteVector Wavefront<Kernel>::gatherEdge(std::size_t lane) {
  std::array<std::uint8_t, kChunk> bytes = {};
  lanes_[lane].openNext(rows_, slant_);
  const auto pieces = lanes_[lane].pieces(rows_.width(), slant_);
  for (const Piece& piece : pieces) {
    if (piece.count > 0) std::memcpy(bytes.data() + piece.step, piece.pixels, piece.count);
  }
  maskGaps(lane, pieces, 0);
  return loadBytes(bytes.data());
}

// The levels of the chunk, a row of the square for each step.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::gather(ByteSquare& levels) {
  for (std::size_t i = 0; i < kLanes; ++i) {
    levels[i] = lanes_[i].isInside() ? loadBytes(lanes_[i].pixels()) : gatherEdge(i);
  }
  transpose(levels);
}

template <const DiffusionKernel& Kernel>
template <std::size_t Tap>
ByteVector Wavefront<Kernel>::collect(ByteVector level, const Above& above, std::size_t at,
                                      std::size_t spanBytes) {
  constexpr DiffusionTap kTap = Kernel.taps[Tap];
  if constexpr (kTap.dy == 0) {
    return level;
  } else {
    constexpr std::ptrdiff_t kColumn = (kMaxReachColumns - kTap.dx) * std::ptrdiff_t{kLanes};
    const std::uint8_t* string = above[kTap.dy] + kShares.ofTap[Tap] * spanBytes;
    return addClamped(level, loadBytes(string + kColumn + at));
  }
}

// The taps backwards: this is the order in which the pixels above come in a scan.
template <const DiffusionKernel& Kernel>
template <std::size_t... Taps>
ByteVector Wavefront<Kernel>::collectAll(ByteVector level, const Above& above, std::size_t at,
                                         std::size_t spanBytes, std::index_sequence<Taps...>) {
  ((level = collect<Kernel.tapCount - 1 - Taps>(level, above, at, spanBytes)), ...);
  return level;
}

template <const DiffusionKernel& Kernel>
template <std::size_t... Shares>
void Wavefront<Kernel>::send(WideVector errors, ByteVector white, std::uint8_t* now,
                             std::size_t spanBytes, Carried& carried,
                             std::index_sequence<Shares...>) {
  const std::array<ByteVector, sizeof...(Shares)> shares = {
      negateWhere(white, fractionOf(errors, kShares.factors[Shares]))...};
  (storeBytes(shares[Shares], now + Shares * spanBytes), ...);
  carried.toSecond = carried.toSecondSoon;
  if constexpr (kNext < kShares.count) carried.toNext = shares[kNext];
  if constexpr (kSecond < kShares.count) carried.toSecondSoon = shares[kSecond];
}

// Turns the levels of a chunk into 255 for white and 0 for black.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::diffuse(ByteSquare& square) {
  const std::size_t span = ring_.spanBytes();
  std::uint8_t* now = ring_.now();
  Above above;
  above.fill(now);
  for (std::size_t dy = 1; dy <= kRowsAbove; ++dy) {
    above[dy] = ring_.before(dy * rowAboveBytes() + ShareRing::kReachBytes);
  }
  Carried carried = carried_;
  const ByteVector offset = splat(kLevelOffset);
  for (std::size_t step = 0; step < kChunk; ++step) {
    const std::size_t at = step * kLanes;
    ByteVector level = square[step] ^ offset;
    level = collectAll(level, above, at, span, std::make_index_sequence<Kernel.tapCount>());
    level = addClamped(level, carried.toSecond);
    if constexpr (kNext < kShares.count) level = addClamped(level, carried.toNext);
    const ByteVector white = aboveZero(level);
    const ByteVector error = (level ^ offset ^ white) & loadBytes(mask_[step].data());
    send(widen(error), white, now + at, span, carried, std::make_index_sequence<kShares.count>());
    square[step] = white;
  }
  carried_ = carried;
  ring_.advance();
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatterEdge(std::size_t lane, ByteVector dots) {
  std::array<std::uint8_t, kChunk> bytes = {};
  storeBytes(dots, bytes.data());
  const auto pieces = lanes_[lane].pieces(rows_.width(), slant_);
  for (const Piece& piece : pieces) {
    if (piece.count > 0) std::memcpy(piece.pixels, bytes.data() + piece.step, piece.count);
  }
  maskGaps(lane, pieces, 255);
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatter(ByteSquare& dots) {
  transpose(dots);
  const ByteVector flip = splat(rows_.flip());
  for (std::size_t i = 0; i < kLanes; ++i) {
    Lane& lane = lanes_[i];
    if (lane.isInside()) {
      storeBytes(dots[i] ^ flip, lane.pixels());
      lane.advanceInside();
    } else {
      scatterEdge(i, dots[i] ^ flip);
      lane.advance(slant_);
    }
  }
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::run() {
  for (std::size_t i = 0; i < kLanes; ++i) lanes_[i] = Lane(rows_, i, slant_);
  for (auto& steps : mask_) steps.fill(255);
  const std::size_t chunks = chunkCount();
  for (std::size_t chunk = 0; chunk < chunks; ++chunk) {
    ByteSquare square;
    gather(square);
    diffuse(square);
    scatter(square);
  }
}

}  // namespace

template <const DiffusionKernel& Kernel>
bool diffuseWavefront(const LevelRows& rows, BitmapAllocator allocator) {
  if (rows.width() == 0 || rows.height() == 0) return true;
  Wavefront<Kernel> wavefront(rows);
  if (!wavefront.allocate(allocator)) return false;
  wavefront.run();
  return true;
}

template bool diffuseWavefront<kBurkes>(const LevelRows&, BitmapAllocator);
template bool diffuseWavefront<kStucki>(const LevelRows&, BitmapAllocator);
template bool diffuseWavefront<kJarvisJudiceNinke>(const LevelRows&, BitmapAllocator);
template bool diffuseWavefront<kSierra>(const LevelRows&, BitmapAllocator);
template bool diffuseWavefront<kStevensonArce>(const LevelRows&, BitmapAllocator);

#endif  // WREN_HAS_BYTE_VECTORS
