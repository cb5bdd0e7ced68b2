// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The one buffer that holds the pages of a job, one after the other.
#pragma once

#include <cstddef>
#include <new>

#include "printer/page_memory.h"

class PageBuffer {
 public:
  /// Makes room for size bytes; their values are not defined. Without memory it calls
  /// the new-handler as the operator new does, and throws std::bad_alloc.
  void resize(std::size_t size) {
    while (!memory.resize(size)) {
      const std::new_handler handler = std::get_new_handler();
      if (handler == nullptr) throw std::bad_alloc();
      handler();
    }
  }
  unsigned char* data() { return memory.data(); }

 private:
  PageMemory memory;
};
