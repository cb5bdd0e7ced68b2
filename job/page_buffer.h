// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The one buffer that holds the pages of a job, one after the other.

#pragma once

#include <cstddef>
#include <cstdint>

#include "printer/page_memory.h"

namespace wren::job {

class PageBuffer {
 public:
  /// Makes room for `size` bytes; their values are undefined. Out of memory: calls the
  /// new-handler as operator new does, or throws std::bad_alloc.
  void resize(std::size_t size) {
    while (!memory_.resize(size)) printer::askForMemory();
  }
  std::uint8_t* data() { return memory_.data(); }

 private:
  printer::PageMemory memory_;
};

}  // namespace wren::job
