// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Owners of what the C library hands out: blocks of malloc, FILE streams and file
// descriptors. Each releases its resource at the end of its life.

#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace wren {

/// Deleter for memory of malloc.
struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
/// A block of malloc; null where there was no memory.
using MallocBytes = std::unique_ptr<unsigned char[], FreeMemory>;

/// Deleter for a FILE stream. The result of fclose is not looked at.
struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

/// Closes its descriptor at the end of its life; -1 means none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~FileDescriptor() { reset(); }
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      reset();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }

  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

  /// Gives the descriptor up without closing it.
  int release() { return std::exchange(descriptor_, -1); }

  void reset() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_;
};

}  // namespace wren
