// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/page_memory.h"

#include <sys/mman.h>

#include <algorithm>

namespace {

constexpr std::size_t kLargePageBytes = std::size_t{1} << 21;
constexpr std::size_t kMostWasteBytes = kLargePageBytes / 4;
constexpr std::size_t kManyBytes = kLargePageBytes - kMostWasteBytes;

// A last large page that would be used for less than three quarters is not asked for,
// so that little more becomes resident than the page takes.
std::size_t bytesOfLargePages(std::size_t bytes) {
  return (bytes + kMostWasteBytes) / kLargePageBytes * kLargePageBytes;
}

void askForLargePages([[maybe_unused]] unsigned char* start, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  madvise(start, bytesOfLargePages(bytes), MADV_HUGEPAGE);
#endif
}

}  // namespace

PageBytes allocatePage(std::size_t bytes) {
  if (bytes < kManyBytes) {
    return PageBytes(static_cast<unsigned char*>(std::malloc(bytes == 0 ? 1 : bytes)));
  }
  void* memory = nullptr;
  const std::size_t room = std::max(bytes, bytesOfLargePages(bytes));
  if (posix_memalign(&memory, kLargePageBytes, room) != 0) return nullptr;
  askForLargePages(static_cast<unsigned char*>(memory), bytes);
  return PageBytes(static_cast<unsigned char*>(memory));
}
