// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error terms that the wavefront has produced: a ring buffer with one delay line for each
// factor of the kernel. Each step appends 16 bytes, one per lane, to every line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dither/allocator.h"
#include "dither/methods.h"
#include "dither/wavefront_lanes.h"

namespace wren::dither {

/// Delay lines of error terms. What was before the first step reads as 0.
class ErrorBuffer {
 public:
  /// How far a tap reads to either side of the pixel above: its columns, in bytes.
  static constexpr std::size_t kReachBytes = kMaxReachColumns * kLanes;

  /// Makes `lineCount` delay lines of `delayBytes` bytes, plus the reach.
  /// @return false without memory.
  bool allocate(std::size_t lineCount, std::size_t delayBytes, Allocator allocator) {
    lineCount_ = lineCount;
    ringBytes_ = roundedUp(delayBytes + kReachBytes + kTileBytes, kTileBytes);
    lineStrideBytes_ = ringBytes_ + kTailBytes;
    const std::size_t bytes = lineCount * lineStrideBytes_;
    block_ = allocateBytes(allocator, bytes);
    if (block_ != nullptr) std::memset(block_.get(), 0, bytes);
    return block_ != nullptr;
  }

  /// Bytes from a position in one line to the same position in the next.
  std::size_t lineStrideBytes() const { return lineStrideBytes_; }

  /// Where the current tile writes to the first line: 16 bytes for each step.
  std::uint8_t* head() const { return block_.get() + head_; }

  /// The position `bytes` before the head, at most the delay and the reach. A tile and twice
  /// the reach may be read from there, as far as they have been written.
  const std::uint8_t* delayed(std::size_t bytes) const {
    return block_.get() + (head_ >= bytes ? head_ - bytes : head_ + ringBytes_ - bytes);
  }

  /// Moves the head to the next tile.
  void advance() {
    // The start of the ring is repeated after its end, so that reads need not wrap.
    for (std::size_t i = 0; head_ < kTailBytes && i < lineCount_; ++i) {
      std::uint8_t* written = head() + i * lineStrideBytes_;
      std::memcpy(written + ringBytes_, written, kTileBytes);
    }
    head_ += kTileBytes;
    if (head_ == ringBytes_) head_ = 0;
  }

 private:
  static constexpr std::size_t kTileBytes = kTileSteps * kLanes;
  static constexpr std::size_t kTailBytes = roundedUp(kTileBytes + 2 * kReachBytes, kTileBytes);

  MallocBytes block_;
  std::size_t lineCount_ = 0;
  std::size_t ringBytes_ = 0;
  std::size_t lineStrideBytes_ = 0;
  std::size_t head_ = 0;
};

}  // namespace wren::dither
