// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The one buffer that holds the pages of a job, one after the other.
#pragma once

#include <cstddef>
#include <memory>

class PageBuffer {
 public:
  /// Makes room for size bytes; their values are not defined. Throws std::bad_alloc.
  void resize(std::size_t size) {
    if (size <= capacity) return;
    // Released first: two pages never live side by side.
    bytes.reset();
    capacity = 0;
    bytes.reset(new unsigned char[size]);
    capacity = size;
  }
  unsigned char* data() { return bytes.get(); }

 private:
  std::unique_ptr<unsigned char[]> bytes;
  std::size_t capacity = 0;
};
