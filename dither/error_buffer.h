// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The shares that the wavefront has sent: one string of bytes for each share of
// a kernel, sixteen bytes more with every step. Only its end is ever looked up,
// so that it is kept in a ring.

#ifndef WREN_BITMAP_SHARE_RING_H_
#define WREN_BITMAP_SHARE_RING_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dither/allocator.h"
#include "dither/wavefront_lanes.h"

/// What is before the first step reads as zero: nothing was sent.
class ShareRing {
 public:
  /// So many bytes before and behind a step's own place a tap may look.
  static constexpr std::size_t kReachBytes = kMaxReachColumns * kLanes;

  /// Keeps `historyBytes`, and the reach, of each of `stringCount` strings.
  /// Returns false when there is no memory.
  bool allocate(std::size_t stringCount, std::size_t historyBytes, BitmapAllocator allocator) {
    stringCount_ = stringCount;
    ringBytes_ = roundedUp(historyBytes + kReachBytes + kChunkBytes, kChunkBytes);
    spanBytes_ = ringBytes_ + kTailBytes;
    const std::size_t bytes = stringCount * spanBytes_;
    block_.reset(static_cast<unsigned char*>(allocateBlock(allocator, bytes)));
    if (block_) std::memset(block_.get(), 0, bytes);
    return block_ != nullptr;
  }

  /// Bytes from a place in one string to the same place in the next.
  std::size_t spanBytes() const { return spanBytes_; }

  /// Where the present chunk writes in the first string: 16 bytes for each step.
  std::uint8_t* now() const { return block_.get() + now_; }

  /// The place `bytes` before that, at most the history and the reach. A chunk
  /// and twice the reach are readable from there, as far as they were written.
  const std::uint8_t* before(std::size_t bytes) const {
    return block_.get() + (now_ >= bytes ? now_ - bytes : now_ + ringBytes_ - bytes);
  }

  /// On to the next chunk.
  void advance() {
    // Behind the ring its start stands once more, for reads over the end.
    for (std::size_t i = 0; now_ < kTailBytes && i < stringCount_; ++i) {
      std::uint8_t* written = now() + i * spanBytes_;
      std::memcpy(written + ringBytes_, written, kChunkBytes);
    }
    now_ += kChunkBytes;
    if (now_ == ringBytes_) now_ = 0;
  }

 private:
  static constexpr std::size_t kChunkBytes = kChunk * kLanes;
  static constexpr std::size_t kTailBytes = roundedUp(kChunkBytes + 2 * kReachBytes, kChunkBytes);

  ByteBlock block_;
  std::size_t stringCount_ = 0;
  std::size_t ringBytes_ = 0;
  std::size_t spanBytes_ = 0;
  std::size_t now_ = 0;
};

#endif  // WREN_BITMAP_SHARE_RING_H_
