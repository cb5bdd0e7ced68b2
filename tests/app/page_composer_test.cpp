// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/page_composer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <vector>

namespace wren::app {
namespace {

using Rows = std::vector<std::vector<std::uint8_t>>;

// A head of 4 dots on paper of 6.
PageTarget narrow(bool fitWidePages) {
  return {.headWidthPx = 4, .paperWidthPx = 6, .fitWidePages = fitWidePages, .maxHeightPx = 100};
}

Rows compose(const PageTarget& target, const Rows& page) {
  PageComposer composer(target, static_cast<unsigned>(page[0].size()),
                        static_cast<unsigned>(page.size()));
  for (const auto& row : page) composer.addRow(row.data());
  EXPECT_TRUE(composer.isComplete());
  Rows composed(composer.heightPx());
  for (unsigned y = 0; y < composer.heightPx(); ++y) {
    const auto row = composer.levels().begin() + y * composer.widthPx();
    composed[y].assign(row, row + composer.widthPx());
  }
  return composed;
}

struct Case {
  const char* name;
  bool fitWidePages;
  Rows page;
  Rows composed;
};

void PrintTo(const Case& shown, std::ostream* out) {
  *out << shown.name;
}

class PageComposerCase : public testing::TestWithParam<Case> {};

TEST_P(PageComposerCase, GivesAPageOfTheWidthOfTheHead) {
  EXPECT_EQ(compose(narrow(GetParam().fitWidePages), GetParam().page), GetParam().composed);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PageComposerCase,
    testing::Values(
        Case{"AsWideAsTheHead", true, {{1, 2, 3, 4}, {5, 6, 7, 8}}, {{1, 2, 3, 4}, {5, 6, 7, 8}}},
        Case{"Narrower", true, {{9}}, {{0, 9, 0, 0}}},
        Case{"AsWideAsThePaper", true, {{1, 2, 3, 4, 5, 6}}, {{2, 3, 4, 5}}},
        Case{"OneWiderThanTheHead", true, {{1, 2, 3, 4, 5}}, {{1, 2, 3, 4}}},
        Case{"TwiceAsWide",
             true,
             {{0, 100, 200, 200, 9, 9, 255, 255}, {0, 100, 0, 0, 9, 9, 255, 255}},
             {{50, 100, 9, 255}}},
        Case{"WideAndNotFitted", false, {{0, 1, 2, 3, 4, 5, 6, 7}}, {{2, 3, 4, 5}}},
        // A dot covers 7/4 pixels: 70 x 3/4 / (7/4), 70 x 1/4 / (7/4). The page would be 4/7 rows
        // long.
        Case{"SevenFourths", true, {{0, 70, 0, 0, 0, 0, 0}}, {{30, 10, 0, 0}}}),
    [](const auto& shown) { return shown.param.name; });

TEST(PageComposer, KeepsTheProportionsOfAScaledPage) {
  PageComposer composer({.headWidthPx = 576, .paperWidthPx = 640}, 1678, 2373);
  EXPECT_EQ(composer.heightPx(), 815U);  // 2373 x 576 / 1678 = 814.56
}

TEST(PageComposer, IsIncompleteUntilItsLastRow) {
  PageComposer composer(narrow(true), 4, 2);
  const std::uint8_t row[4] = {};
  composer.addRow(row);
  EXPECT_FALSE(composer.isComplete());
  composer.addRow(row);
  EXPECT_TRUE(composer.isComplete());
}

TEST(PageComposer, IgnoresRowsBeyondItsHeight) {
  PageComposer composer(narrow(true), 4, 1);
  const std::uint8_t row[4] = {1, 2, 3, 4};
  for (int i = 0; i < 3; ++i) composer.addRow(row);
  EXPECT_THAT(composer.levels(), testing::ElementsAre(1, 2, 3, 4));
}

}  // namespace
}  // namespace wren::app
