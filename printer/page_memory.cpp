// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/page_memory.h"

#include <sys/mman.h>

#include <new>

namespace wren::printer {
namespace {

constexpr std::size_t kHugePageBytes = std::size_t{1} << 21;
constexpr std::size_t kManyBytes = 4 * kHugePageBytes;

// Only for whole huge pages, so that no byte more becomes resident.
void adviseHugePages([[maybe_unused]] std::uint8_t* start, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  madvise(start, bytes / kHugePageBytes * kHugePageBytes, MADV_HUGEPAGE);
#endif
}

}  // namespace

MallocBytes allocatePage(std::size_t bytes) {
  if (bytes < kManyBytes) {
    return MallocBytes(static_cast<std::uint8_t*>(std::malloc(bytes == 0 ? 1 : bytes)));
  }
  void* memory = nullptr;
  if (posix_memalign(&memory, kHugePageBytes, bytes) != 0) return nullptr;
  adviseHugePages(static_cast<std::uint8_t*>(memory), bytes);
  return MallocBytes(static_cast<std::uint8_t*>(memory));
}

void askForMemory() {
  const std::new_handler handler = std::get_new_handler();
  if (handler == nullptr) throw std::bad_alloc();
  handler();
}

}  // namespace wren::printer
