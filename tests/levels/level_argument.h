// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A vector level as a program argument: for tests and benchmarks. The filter takes no such
// argument.

#pragma once

#include <optional>
#include <string_view>

#include "common/vector_level.h"

namespace wren {

/// The level of that name (`vectorLevelName`) if this build has it and this processor runs it.
inline std::optional<VectorLevel> machineLevelNamed(std::string_view name) {
  for (const VectorLevel level : machineVectorLevels()) {
    if (vectorLevelName(level) == name) return level;
  }
  return std::nullopt;
}

}  // namespace wren
