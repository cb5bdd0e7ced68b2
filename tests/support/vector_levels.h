// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs test bodies at every vector level of the machine.

#pragma once

#include <gtest/gtest.h>

#include <string>

#include "common/vector_level.h"

namespace wren_test {

/// Lets kernels run at a level until the end of the scope.
class AtVectorLevel {
 public:
  explicit AtVectorLevel(wren::VectorLevel level) : before_(wren::vectorLevel()) {
    wren::useVectorLevel(level);
  }
  AtVectorLevel(const AtVectorLevel&) = delete;
  AtVectorLevel& operator=(const AtVectorLevel&) = delete;
  ~AtVectorLevel() { wren::useVectorLevel(before_); }

 private:
  wren::VectorLevel before_;
};

/// A fixture whose tests run once at each level; instantiate it with
/// `everyVectorLevel()` and `vectorLevelTestName`.
class VectorLevelTest : public testing::TestWithParam<wren::VectorLevel> {
 private:
  AtVectorLevel level_{GetParam()};
};

/// The parameters of a `VectorLevelTest`: the levels of the machine.
inline auto everyVectorLevel() {
  const auto levels = wren::machineVectorLevels();
  return testing::ValuesIn(levels.begin(), levels.end());
}

/// The level's name as a part of a test's name: "AVX512".
inline std::string vectorLevelTestName(const testing::TestParamInfo<wren::VectorLevel>& info) {
  std::string name;
  for (const char c : wren::vectorLevelName(info.param)) {
    if (c != '-') name += c;
  }
  return name;
}

}  // namespace wren_test
