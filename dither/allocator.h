// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where this folder's memory comes from. Nothing here throws: a null block is
// reported by a result. Tests hand in functions that fail.

#ifndef WREN_BITMAP_ALLOCATOR_H_
#define WREN_BITMAP_ALLOCATOR_H_

#include <cstddef>
#include <cstdlib>
#include <memory>

/// Returns a block that std::free releases, or null.
using BitmapAllocator = void* (*)(std::size_t);

/// Releases a block of a BitmapAllocator.
struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

/// An owned block of bytes; empty when there was no memory.
using ByteBlock = std::unique_ptr<unsigned char[], FreeBlock>;

/// Asks `allocator`, or std::malloc when that is null, for `bytes` bytes.
inline void* allocateBlock(BitmapAllocator allocator, std::size_t bytes) {
  return allocator ? allocator(bytes) : std::malloc(bytes);
}

#endif  // WREN_BITMAP_ALLOCATOR_H_
