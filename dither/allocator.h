// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the dither kernels and the bitmap get their memory. Nothing here throws: without
// memory the result is null. Tests pass in functions that fail.

#pragma once

#include <cstddef>
#include <cstdlib>

#include "common/handles.h"

namespace wren::dither {

/// Returns a block that std::free releases, or null without memory.
using Allocator = void* (*)(std::size_t);

/// Asks `allocator`, or std::malloc if that is null, for `bytes` bytes. The block is not
/// cleared; null without memory.
inline MallocBytes allocateBytes(Allocator allocator, std::size_t bytes) {
  void* block = allocator != nullptr ? allocator(bytes) : std::malloc(bytes);
  return MallocBytes(static_cast<unsigned char*>(block));
}

}  // namespace wren::dither
