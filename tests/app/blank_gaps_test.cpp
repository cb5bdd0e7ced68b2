// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/blank_gaps.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace wren::app {
namespace {

// One letter a row of two pixels: '.' is blank.
std::vector<std::uint8_t> levelsOf(const std::string& rows) {
  std::vector<std::uint8_t> levels;
  for (const char row : rows) {
    levels.push_back(0);
    levels.push_back(row == '.' ? 0 : static_cast<std::uint8_t>(row));
  }
  return levels;
}

struct Case {
  const char* name;
  const char* rows;
  unsigned longest;
  const char* shortened;
};

void PrintTo(const Case& shown, std::ostream* out) {
  *out << shown.name;
}

class BlankGaps : public testing::TestWithParam<Case> {};

TEST_P(BlankGaps, AreShortened) {
  const std::string rows = GetParam().rows;
  std::vector<std::uint8_t> levels = levelsOf(rows);
  const unsigned kept =
      shortenBlankGaps(levels, 2, static_cast<unsigned>(rows.size()), GetParam().longest);
  EXPECT_EQ(levels, levelsOf(GetParam().shortened));
  EXPECT_EQ(kept, std::string(GetParam().shortened).size());
}

INSTANTIATE_TEST_SUITE_P(Pages, BlankGaps,
                         testing::Values(Case{"NoGap", "abc", 1, "abc"},
                                         Case{"ShortGap", "a..b", 2, "a..b"},
                                         Case{"LongGap", "a....b", 2, "a..b"},
                                         Case{"EveryGap", "a...b.c....d", 1, "a.b.c.d"},
                                         Case{"NoneLeft", "a...b", 0, "ab"},
                                         Case{"EdgesStay", "...a....b....", 1, "...a.b...."},
                                         Case{"BlankPage", ".....", 1, "....."}),
                         [](const auto& shown) { return shown.param.name; });

}  // namespace
}  // namespace wren::app
