// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/vector_level.h"

#include <atomic>

#include "common/vector_targets.h"

namespace wren {
namespace {

struct MachineLevels {
  std::array<VectorLevel, kVectorLevelCount> level = {VectorLevel::kScalar};
  std::size_t count = 1;

  void add(VectorLevel next) { level[count++] = next; }
};

// Each level includes the one before it. The conditions are the instructions that the
// target attributes of Highway's levels name (common/vector_targets.h switches off the rest).
MachineLevels findMachineLevels() {
  MachineLevels found;
#if defined(WREN_X86_KERNELS)
  if (!__builtin_cpu_supports("ssse3")) return found;
  found.add(VectorLevel::kSsse3);
  if (!__builtin_cpu_supports("sse4.2")) return found;
  found.add(VectorLevel::kSse4);
  if (!__builtin_cpu_supports("avx2")) return found;
  found.add(VectorLevel::kAvx2);
#elif defined(WREN_NEON_KERNELS)
  found.add(VectorLevel::kNeon);
#endif
  return found;
}

const MachineLevels& machineLevels() {
  static const MachineLevels kLevels = findMachineLevels();
  return kLevels;
}

std::atomic<VectorLevel>& chosenLevel() {
  static std::atomic<VectorLevel> chosen = machineVectorLevels().back();
  return chosen;
}

}  // namespace

std::string_view vectorLevelName(VectorLevel level) {
  constexpr std::array<std::string_view, kVectorLevelCount> kNames = {"scalar", "SSSE3",   "SSE4",
                                                                      "AVX2",   "AVX-512", "NEON"};
  return kNames[static_cast<std::size_t>(level)];
}

std::span<const VectorLevel> machineVectorLevels() {
  const MachineLevels& levels = machineLevels();
  return {levels.level.data(), levels.count};
}

VectorLevel vectorLevel() {
  return chosenLevel().load(std::memory_order_relaxed);
}

void useVectorLevel(VectorLevel level) {
  chosenLevel().store(level, std::memory_order_relaxed);
}

}  // namespace wren
