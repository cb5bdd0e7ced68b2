// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A stream of the C library that writes into memory. No print job of the filter reaches it.

#pragma once

#include <cstdio>
#include <new>
#include <string>

#include "common/handles.h"

namespace wren {

class MemoryFile {
 public:
  /// Throws std::bad_alloc.
  MemoryFile() : stream_(::open_memstream(&bytes_, &size_)) {
    if (stream_ == nullptr) throw std::bad_alloc();
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() {
    stream_.reset();
    FreeMemory()(bytes_);
  }

  /// Owned by this object.
  std::FILE* stream() { return stream_.get(); }

  /// Closes the stream. Throws std::bad_alloc if a write found no memory.
  /// @return all bytes that were written.
  std::string take() {
    const bool failed = std::ferror(stream_.get()) != 0 || std::fflush(stream_.get()) != 0;
    stream_.reset();
    if (failed) throw std::bad_alloc();
    return {bytes_, size_};
  }

 private:
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  FilePtr stream_;
};

}  // namespace wren
