// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Which vector instructions the kernels use. A build has a scalar kernel and one kernel for
// each vector level of its architecture; a process takes the best one that its processor
// has. All of them give the same bytes.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace wren {

/// Sets of vector instructions, by what they are called in the manuals. Within an
/// architecture a higher value is faster.
enum class VectorLevel : std::uint8_t {
  kScalar,  ///< No vectors; every build has it.
  kSsse3,   ///< x86-64, 16 bytes.
  kSse4,    ///< x86-64, 16 bytes.
  kAvx2,    ///< x86-64, 32 bytes.
  kAvx512,  ///< x86-64, 64 bytes.
  kNeon,    ///< 64-bit ARM, 16 bytes.
};

inline constexpr std::size_t kVectorLevelCount = 6;

/// "scalar", "SSSE3", "SSE4", "AVX2", "AVX-512" or "NEON".
std::string_view vectorLevelName(VectorLevel level);

/// The levels of this build that this processor has, scalar first, the best one last.
std::span<const VectorLevel> machineVectorLevels();

/// The level at which kernels run: the best of the machine, until `useVectorLevel`.
VectorLevel vectorLevel();

/// Lets kernels run at one of `machineVectorLevels()`, for tests and benchmarks. No job calls
/// it. Call it while no kernel runs.
void useVectorLevel(VectorLevel level);

/// One function for each level, null for levels that the build does not have. Made by
/// `WREN_KERNEL_TABLE` (common/vector_targets.h).
template <typename Function>
using KernelTable = std::array<Function, kVectorLevelCount>;

/// The kernel of the level at which kernels run.
template <typename Function>
Function kernelOf(const KernelTable<Function>& table) {
  return table[static_cast<std::size_t>(vectorLevel())];
}

}  // namespace wren
