// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Error terms that the wavefront has produced: a ring buffer with one delay line for each
// distinct error term of the kernel. Each step appends one byte per lane to every line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "dither/allocator.h"
#include "dither/methods.h"
#include "dither/wavefront_lanes.h"

namespace wren::dither {

/// Delay lines of error terms. What was before the first step reads as 0.
class ErrorBuffer {
 public:
  /// @param lanes bytes per step.
  explicit ErrorBuffer(std::size_t lanes)
      : tileBytes_(kTileSteps * lanes),
        reachBytes_(kMaxReachColumns * lanes),
        tailBytes_(roundedUp(tileBytes_ + 2 * reachBytes_, tileBytes_)) {}

  /// Makes `lineCount` delay lines of `delayBytes` bytes, plus the reach.
  /// @return false without memory.
  bool allocate(std::size_t lineCount, std::size_t delayBytes, Allocator allocator) {
    lineCount_ = lineCount;
    ringBytes_ = roundedUp(delayBytes + reachBytes_ + tileBytes_, tileBytes_);
    lineStrideBytes_ = ringBytes_ + tailBytes_;
    const std::size_t bytes = lineCount * lineStrideBytes_;
    std::size_t room = bytes + kAlignment;
    block_ = allocateBytes(allocator, room);
    if (block_ == nullptr) return false;
    void* start = block_.get();
    lines_ = static_cast<std::uint8_t*>(std::align(kAlignment, bytes, start, room));
    std::memset(lines_, 0, bytes);
    return true;
  }

  /// How far a tap reads to either side of the pixel above: its columns, in bytes.
  std::size_t reachBytes() const { return reachBytes_; }

  /// Bytes from a position in one line to the same position in the next.
  std::size_t lineStrideBytes() const { return lineStrideBytes_; }

  /// Where the current tile writes to the first line: one vector for each step.
  std::uint8_t* head() const { return lines_ + head_; }

  /// The position `bytes` before the head, at most the delay and the reach. A tile and twice
  /// the reach may be read from there, as far as they have been written.
  const std::uint8_t* delayed(std::size_t bytes) const {
    return lines_ + (head_ >= bytes ? head_ - bytes : head_ + ringBytes_ - bytes);
  }

  /// Moves the head to the next tile.
  void advance() {
    // The start of the ring is repeated after its end, so that reads need not wrap.
    for (std::size_t i = 0; head_ < tailBytes_ && i < lineCount_; ++i) {
      std::uint8_t* written = head() + i * lineStrideBytes_;
      std::memcpy(written + ringBytes_, written, tileBytes_);
    }
    head_ += tileBytes_;
    if (head_ == ringBytes_) head_ = 0;
  }

 private:
  // A cache line: no store of a vector may cross two of them.
  static constexpr std::size_t kAlignment = 64;

  std::size_t tileBytes_;
  std::size_t reachBytes_;
  std::size_t tailBytes_;
  MallocBytes block_;
  std::uint8_t* lines_ = nullptr;
  std::size_t lineCount_ = 0;
  std::size_t ringBytes_ = 0;
  std::size_t lineStrideBytes_ = 0;
  std::size_t head_ = 0;
};

}  // namespace wren::dither
