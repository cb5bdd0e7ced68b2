// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bitmap/diffusion_wavefront.h"

#include "bitmap/byte_vector.h"

#ifdef WREN_HAS_BYTE_VECTORS

#include <algorithm>
#include <cstring>
#include <utility>

#include "bitmap/diffusion_shares.h"

namespace {

constexpr std::size_t kLanes = ByteVector::kBytes;

// Steps that are done together: levels and dots of sixteen rows and sixteen
// columns are turned into lanes and back as one square.
constexpr std::size_t kChunk = 16;
constexpr std::size_t kChunkBytes = kChunk * kLanes;

// How far before a chunk's first step the shares of a row above are looked up.
constexpr std::size_t kReachBytes = kMaxReachColumns * kLanes;

// So far is the row below behind at least: what a chunk looks up was then made
// in an earlier chunk.
constexpr std::size_t kMinLag = kChunk + kMaxReachColumns;

constexpr std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

// Where the rows are on the front.
struct Slant {
  explicit Slant(std::size_t width)
      : lag(std::max(kMinLag, roundedUp(width + kMaxReachColumns - 1, kLanes) / kLanes)),
        period(kLanes * lag + 1) {}

  std::size_t lag;     // columns between a row and the next
  std::size_t period;  // steps from the start of a row to the next one of the same lane
};

// The shares that were sent, as one string of bytes for each factor of a kernel,
// in a ring. Behind the ring its first bytes stand once more, so that a read
// may run over the end.
class ShareRing {
 public:
  bool allocate(std::size_t stringCount, std::size_t historyBytes, BitmapAllocator allocator) {
    ringBytes_ = roundedUp(historyBytes + kReachBytes + kChunkBytes, kChunkBytes);
    spanBytes_ = ringBytes_ + kTailBytes;
    const std::size_t bytes = stringCount * spanBytes_;
    block_.reset(static_cast<unsigned char*>(allocateBlock(allocator, bytes)));
    if (block_) std::memset(block_.get(), 0, bytes);
    return block_ != nullptr;
  }

  std::size_t spanBytes() const { return spanBytes_; }

  // Where the chunk that starts now writes, in the first string.
  std::uint8_t* now() const { return block_.get() + now_; }

  // `bytes` before that; readable to the end of the chunk's reach.
  const std::uint8_t* before(std::size_t bytes) const {
    return block_.get() + (now_ >= bytes ? now_ - bytes : now_ + ringBytes_ - bytes);
  }

  void advance(std::size_t stringCount) {
    for (std::size_t i = 0; now_ < kTailBytes && i < stringCount; ++i) {
      std::uint8_t* written = now() + i * spanBytes_;
      std::memcpy(written + ringBytes_, written, kChunkBytes);
    }
    now_ += kChunkBytes;
    if (now_ == ringBytes_) now_ = 0;
  }

 private:
  static constexpr std::size_t kTailBytes = roundedUp(kChunkBytes + 2 * kReachBytes, kChunkBytes);

  ByteBlock block_;
  std::size_t ringBytes_ = 0;
  std::size_t spanBytes_ = 0;
  std::size_t now_ = 0;
};

// A row that a lane works on; beyond the last row of the page it has no pointers.
struct OpenRow {
  OpenRow() = default;
  OpenRow(const LevelRows& rows, std::size_t number) : y(number) {
    if (y >= rows.height()) return;
    levels = rows.levels(y);
    dots = rows.dots(y);
  }

  std::size_t y = 0;
  const std::uint8_t* levels = nullptr;
  std::uint8_t* dots = nullptr;
};

// `count` pixels of a row that a chunk has in its steps from `step` on.
struct Piece {
  const std::uint8_t* levels;
  std::uint8_t* dots;
  std::size_t step;
  std::size_t count;
};

// One lane: its row and the column of the next step, negative before its start.
class Lane {
 public:
  Lane() = default;
  Lane(const LevelRows& rows, std::size_t number, const Slant& slant)
      : row_(rows, number), x_(-static_cast<std::ptrdiff_t>(number * slant.lag)) {}

  // Whether all steps of the chunk are pixels of one row.
  bool isInside(std::size_t width) const {
    return row_.levels && x_ >= 0 && static_cast<std::size_t>(x_) + kChunk <= width;
  }

  // For a lane that is inside.
  const std::uint8_t* levels() const { return row_.levels + x_; }
  std::uint8_t* dots() const { return row_.dots + x_; }

  // For a lane that is not: opens the next row if the chunk comes up to it.
  void openNext(const LevelRows& rows, const Slant& slant) {
    if (reachesNext(slant)) next_ = OpenRow(rows, row_.y + kLanes);
  }

  // The pixels of the chunk: the end of the present row, the start of the next.
  std::array<Piece, 2> pieces(std::size_t width, const Slant& slant) const {
    const auto nextStart = static_cast<std::ptrdiff_t>(slant.period) - x_;
    return {{pieceOf(row_, -x_, width), pieceOf(next_, nextStart, width)}};
  }

  void advance(const Slant& slant) {
    if (reachesNext(slant)) {
      row_ = next_;
      x_ -= static_cast<std::ptrdiff_t>(slant.period);
    }
    x_ += kStep;
  }

 private:
  static constexpr auto kStep = static_cast<std::ptrdiff_t>(kChunk);

  bool reachesNext(const Slant& slant) const {
    return x_ + kStep >= static_cast<std::ptrdiff_t>(slant.period);
  }

  // What the chunk has of a row whose first pixel is in the given step.
  static Piece pieceOf(const OpenRow& row, std::ptrdiff_t start, std::size_t width) {
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(start, 0);
    const std::ptrdiff_t end = std::min(start + static_cast<std::ptrdiff_t>(width), kStep);
    if (!row.levels || first >= end) return {nullptr, nullptr, kChunk, 0};
    return {row.levels + (first - start), row.dots + (first - start),
            static_cast<std::size_t>(first), static_cast<std::size_t>(end - first)};
  }

  OpenRow row_;
  OpenRow next_;
  std::ptrdiff_t x_ = 0;
};

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
  void setMask(std::size_t lane, std::size_t step, std::size_t count, std::uint8_t byte);
  void diffuse(ByteSquare& square);
  void scatter(ByteSquare& dots);
  void scatterEdge(std::size_t lane, ByteVector dots);

  template <std::size_t Tap>
  static ByteVector collect(ByteVector level, const Above& above, std::size_t spanBytes);
  template <std::size_t... Taps>
  static ByteVector collectAll(ByteVector level, const Above& above, std::size_t spanBytes,
                               std::index_sequence<Taps...>);
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

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::setMask(std::size_t lane, std::size_t step, std::size_t count,
                                std::uint8_t byte) {
  for (std::size_t i = step; i < step + count; ++i) mask_[i][lane] = byte;
}

template <const DiffusionKernel& Kernel>
ByteVector Wavefront<Kernel>::gatherEdge(std::size_t lane) {
  std::array<std::uint8_t, kChunk> bytes = {};
  lanes_[lane].openNext(rows_, slant_);
  setMask(lane, 0, kChunk, 0);
  for (const Piece& piece : lanes_[lane].pieces(rows_.width(), slant_)) {
    if (piece.count == 0) continue;
    std::memcpy(bytes.data() + piece.step, piece.levels, piece.count);
    setMask(lane, piece.step, piece.count, 255);
  }
  return loadBytes(bytes.data());
}

// The levels of the chunk, a row of the square for each step.
template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::gather(ByteSquare& levels) {
  const std::size_t width = rows_.width();
  for (std::size_t i = 0; i < kLanes; ++i) {
    levels[i] = lanes_[i].isInside(width) ? loadBytes(lanes_[i].levels()) : gatherEdge(i);
  }
  transpose(levels);
}

template <const DiffusionKernel& Kernel>
template <std::size_t Tap>
ByteVector Wavefront<Kernel>::collect(ByteVector level, const Above& above, std::size_t spanBytes) {
  constexpr DiffusionTap kTap = Kernel.taps[Tap];
  if constexpr (kTap.dy == 0) {
    return level;
  } else {
    constexpr std::ptrdiff_t kColumn = (kMaxReachColumns - kTap.dx) * std::ptrdiff_t{kLanes};
    const std::uint8_t* string = above[kTap.dy] + kShares.ofTap[Tap] * spanBytes;
    return addClamped(level, loadBytes(string + kColumn));
  }
}

// The taps backwards: this is the order in which the pixels above come in a scan.
template <const DiffusionKernel& Kernel>
template <std::size_t... Taps>
ByteVector Wavefront<Kernel>::collectAll(ByteVector level, const Above& above,
                                         std::size_t spanBytes, std::index_sequence<Taps...>) {
  ((level = collect<Kernel.tapCount - 1 - Taps>(level, above, spanBytes)), ...);
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
    above[dy] = ring_.before(dy * rowAboveBytes() + kReachBytes);
  }
  Carried carried = carried_;
  const ByteVector offset = splat(kLevelOffset);
  for (std::size_t step = 0; step < kChunk; ++step) {
    ByteVector level = square[step] ^ offset;
    level = collectAll(level, above, span, std::make_index_sequence<Kernel.tapCount>());
    level = addClamped(addClamped(level, carried.toSecond), carried.toNext);
    const ByteVector white = aboveZero(level);
    const ByteVector error = (level ^ offset ^ white) & loadBytes(mask_[step].data());
    send(widen(error), white, now, span, carried, std::make_index_sequence<kShares.count>());
    square[step] = white;
    now += kLanes;
    for (auto& row : above) row += kLanes;
  }
  carried_ = carried;
  ring_.advance(kShares.count);
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatterEdge(std::size_t lane, ByteVector dots) {
  std::array<std::uint8_t, kChunk> bytes = {};
  storeBytes(dots, bytes.data());
  for (const Piece& piece : lanes_[lane].pieces(rows_.width(), slant_)) {
    if (piece.count > 0) std::memcpy(piece.dots, bytes.data() + piece.step, piece.count);
  }
  setMask(lane, 0, kChunk, 255);
}

template <const DiffusionKernel& Kernel>
void Wavefront<Kernel>::scatter(ByteSquare& dots) {
  transpose(dots);
  const ByteVector flip = splat(rows_.flip());
  const std::size_t width = rows_.width();
  for (std::size_t i = 0; i < kLanes; ++i) {
    if (lanes_[i].isInside(width)) {
      storeBytes(dots[i] ^ flip, lanes_[i].dots());
    } else {
      scatterEdge(i, dots[i] ^ flip);
    }
    lanes_[i].advance(slant_);
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
