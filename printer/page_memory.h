// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Memory for pages. All of it is from the C library, which reports a failure and asks
// no new-handler.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

struct FreeMemory {
  void operator()(unsigned char* memory) const { std::free(memory); }
};
using PageBytes = std::unique_ptr<unsigned char, FreeMemory>;

/// Room for a page, with undefined values; null without memory. For a page of many
/// megabytes the system is asked for large memory pages, which it clears and maps
/// several times faster.
PageBytes allocatePage(std::size_t bytes);

/// One page after the other in the same memory, which only grows: memory that goes
/// back to the system comes again as memory that has to be cleared first.
class PageMemory {
 public:
  /// Makes room for a page; what was in it before is lost. False without memory.
  bool resize(std::size_t bytes) {
    if (pageBytes != nullptr && bytes <= capacity) return true;
    // Released first: two pages never live side by side.
    pageBytes.reset();
    pageBytes = allocatePage(bytes);
    capacity = bytes;
    return pageBytes != nullptr;
  }
  unsigned char* data() { return pageBytes.get(); }

 private:
  PageBytes pageBytes;
  std::size_t capacity = 0;
};

/// Room for a page that is never touched: it only tells whether there is room.
/// Without the volatile member a compiler drops the allocation and its test.
class ScratchPage {
 public:
  explicit ScratchPage(std::size_t bytes) : memory(std::malloc(bytes == 0 ? 1 : bytes)) {}
  ScratchPage(const ScratchPage&) = delete;
  ScratchPage& operator=(const ScratchPage&) = delete;
  ~ScratchPage() { std::free(memory); }
  bool isThere() const { return memory != nullptr; }

 private:
  void* volatile memory;
};
