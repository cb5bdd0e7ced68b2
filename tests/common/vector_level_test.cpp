// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/vector_level.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/support/vector_levels.h"

namespace {

using wren::VectorLevel;

TEST(VectorLevel, OfAMachineStartsWithScalarAndRises) {
  const auto levels = wren::machineVectorLevels();
  ASSERT_FALSE(levels.empty());
  EXPECT_EQ(levels.front(), VectorLevel::kScalar);
  EXPECT_TRUE(std::is_sorted(levels.begin(), levels.end()));
  EXPECT_EQ(std::set(levels.begin(), levels.end()).size(), levels.size());
}

TEST(VectorLevel, IsTheBestOfTheMachineUnlessAnotherIsChosen) {
  EXPECT_EQ(wren::vectorLevel(), wren::machineVectorLevels().back());
  {
    const wren_test::AtVectorLevel scalar(VectorLevel::kScalar);
    EXPECT_EQ(wren::vectorLevel(), VectorLevel::kScalar);
  }
  EXPECT_EQ(wren::vectorLevel(), wren::machineVectorLevels().back());
}

#ifdef __aarch64__
TEST(VectorLevel, OfA64BitArmIsNeon) {
  EXPECT_EQ(wren::machineVectorLevels().back(), VectorLevel::kNeon);
}
#endif

#ifdef __x86_64__
TEST(VectorLevel, OfAnX86ProcessorIsOneThatItHas) {
  const auto levels = wren::machineVectorLevels();
  const auto has = [&](VectorLevel level) {
    return std::find(levels.begin(), levels.end(), level) != levels.end();
  };
  EXPECT_EQ(has(VectorLevel::kSsse3), __builtin_cpu_supports("ssse3") != 0);
  EXPECT_EQ(has(VectorLevel::kSse4), __builtin_cpu_supports("sse4.2") != 0);
  EXPECT_EQ(has(VectorLevel::kAvx2), __builtin_cpu_supports("avx2") != 0);
}
#endif

TEST(VectorLevel, HasANameOfItsOwn) {
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < wren::kVectorLevelCount; ++i) {
    names.insert(wren::vectorLevelName(static_cast<VectorLevel>(i)));
  }
  EXPECT_THAT(names,
              testing::UnorderedElementsAre("scalar", "SSSE3", "SSE4", "AVX2", "AVX-512", "NEON"));
}

TEST(KernelTable, GivesTheFunctionOfTheCurrentLevel) {
  wren::KernelTable<int> table;
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<int>(i);
  for (const VectorLevel level : wren::machineVectorLevels()) {
    const wren_test::AtVectorLevel at(level);
    EXPECT_EQ(wren::kernelOf(table), static_cast<int>(level));
  }
}

}  // namespace
