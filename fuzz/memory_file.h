// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A file in memory, for code that needs a descriptor or a path.

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "fuzz/input.h"

namespace fuzz {

/// Emptied and refilled for every input; closed at the end.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("fuzz", 0)) {
    check(descriptor_ >= 0, "a file in memory can be made");
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor_); }

  int descriptor() const { return descriptor_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  /// Replaces the content with `size` bytes and seeks to the start.
  void fill(const void* bytes, std::size_t size) {
    clear();
    check(size == 0 || pwrite(descriptor_, bytes, size, 0) == static_cast<ssize_t>(size),
          "the file in memory takes its bytes");
  }

  void clear() {
    check(ftruncate(descriptor_, 0) == 0, "the file in memory can be emptied");
    lseek(descriptor_, 0, SEEK_SET);
  }

  std::vector<std::uint8_t> content() const {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)));
    const ssize_t taken = pread(descriptor_, bytes.data(), bytes.size(), 0);
    check(taken == static_cast<ssize_t>(bytes.size()), "the file in memory can be read");
    return bytes;
  }

 private:
  int descriptor_;
};

}  // namespace fuzz
