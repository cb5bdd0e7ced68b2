// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/page_memory.h"

#include <sys/mman.h>

namespace {

constexpr std::size_t kLargePageBytes = std::size_t{1} << 21;
constexpr std::size_t kManyBytes = 4 * kLargePageBytes;

// Only whole large pages are asked for, so that no byte more becomes resident.
void askForLargePages([[maybe_unused]] unsigned char* start, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  madvise(start, bytes / kLargePageBytes * kLargePageBytes, MADV_HUGEPAGE);
#endif
}

}  // namespace

PageBytes allocatePage(std::size_t bytes) {
  if (bytes < kManyBytes) {
    return PageBytes(static_cast<unsigned char*>(std::malloc(bytes == 0 ? 1 : bytes)));
  }
  void* memory = nullptr;
  if (posix_memalign(&memory, kLargePageBytes, bytes) != 0) return nullptr;
  askForLargePages(static_cast<unsigned char*>(memory), bytes);
  return PageBytes(static_cast<unsigned char*>(memory));
}
