// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Memory for pages. All of it comes from malloc, which reports a failure and does not call
// the new-handler; `askForMemory` does that where a page cannot be left out.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/handles.h"

namespace wren::printer {

/// A block for a page, with undefined values; null if out of memory. For pages of many
/// megabytes the kernel is asked for huge pages: fewer page faults, less to clear.
MallocBytes allocatePage(std::size_t bytes);

/// Calls the new-handler, as operator new does after a failure: it frees memory, throws, or
/// ends the program. Without a new-handler throws std::bad_alloc.
void askForMemory();

/// Reuses one buffer for all pages of a job. It never shrinks: the kernel would have to zero
/// the memory again. Movable; a moved-from object is empty and can be used again.
class PageMemory {
 public:
  using Allocate = MallocBytes (*)(std::size_t bytes);

  /// @param allocate where the memory comes from; null is reported as a failure.
  explicit PageMemory(Allocate allocate = allocatePage) : allocate_(allocate) {}

  /// Makes room for a page; its values are undefined. False if out of memory; the buffer
  /// is then empty.
  bool resize(std::size_t bytes) {
    if (bytes_ != nullptr && bytes <= capacity_) return true;
    // Released first: two pages never exist at the same time.
    bytes_.reset();
    bytes_ = allocate_(bytes);
    capacity_ = bytes;
    return bytes_ != nullptr;
  }
  std::uint8_t* data() const { return bytes_.get(); }

 private:
  Allocate allocate_;
  MallocBytes bytes_;
  std::size_t capacity_ = 0;
};

/// A block of page size that is never written: it only tells whether there is room.
/// Without the volatile member a compiler may drop the allocation and its test.
class ScratchPage {
 public:
  explicit ScratchPage(std::size_t bytes) : memory_(std::malloc(bytes == 0 ? 1 : bytes)) {}
  ScratchPage(const ScratchPage&) = delete;
  ScratchPage& operator=(const ScratchPage&) = delete;
  ~ScratchPage() { std::free(memory_); }
  bool isThere() const { return memory_ != nullptr; }

 private:
  void* volatile memory_;
};

}  // namespace wren::printer
