// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/blank_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/printer/test_pages.h"
#include "tests/reference/page.h"

namespace {

// A page of the given height, 4 bytes a row, with one dot in each of the named rows.
std::string pageWithDotsIn(unsigned long height, const std::vector<unsigned long>& rows,
                           unsigned long column = 1) {
  std::string page(4 * height, '\0');
  for (const auto row : rows) page[4 * row + column] = 1;
  return page;
}

const unsigned char* bytes(const std::string& page) {
  return reinterpret_cast<const unsigned char*>(page.data());
}

unsigned long front(const std::string& page, unsigned long height, unsigned long skip = 0) {
  return wrenImageCountBlankLinesFromFront(bytes(page), 4, height, skip, 4);
}

unsigned long back(const std::string& page, unsigned long height, unsigned long skip = 0) {
  return wrenImageCountBlankLinesFromBack(bytes(page), 4, height, skip, 4);
}

// Printed output depends on the first row not being tested.
TEST(BlankLines, FromFrontNeverTestsRowZero) {
  const struct {
    std::vector<unsigned long> rows;
    unsigned long expected;
  } cases[] = {{{3}, 2}, {{0, 5}, 4}, {{0}, 10}, {{}, 10}, {{1}, 0}, {{9}, 8}, {{0, 1}, 0}};
  for (const auto& row : cases) EXPECT_EQ(front(pageWithDotsIn(10, row.rows), 10), row.expected);
}

TEST(BlankLines, FromBackIsTheIndexPastTheContent) {
  const struct {
    std::vector<unsigned long> rows;
    unsigned long expected;
  } cases[] = {{{3}, 4}, {{0, 5}, 6}, {{0}, 1}, {{}, 0}, {{9}, 10}, {{2, 8}, 9}};
  for (const auto& row : cases) EXPECT_EQ(back(pageWithDotsIn(10, row.rows), 10), row.expected);
}

TEST(BlankLines, PagesOfNoOrOneRow) {
  EXPECT_EQ(front("", 0), 0U);
  EXPECT_EQ(back("", 0), 0U);
  EXPECT_EQ(front(pageWithDotsIn(1, {0}), 1), 1U);
  EXPECT_EQ(back(pageWithDotsIn(1, {0}), 1), 1U);
}

TEST(BlankLines, EveryByteOfARowCounts) {
  for (unsigned long column = 0; column < 4; ++column) {
    EXPECT_EQ(back(pageWithDotsIn(5, {2}, column), 5), 3U) << column;
    EXPECT_EQ(front(pageWithDotsIn(5, {2}, column), 5), 1U) << column;
  }
}

TEST(BlankLines, SkippedPixelsDoNotCount) {
  const std::string page = pageWithDotsIn(5, {2}, 3);
  EXPECT_EQ(back(page, 5, 1), 0U);
  EXPECT_EQ(front(page, 5, 1), 5U);
  EXPECT_EQ(back(page, 5, 4), 0U);
}

TEST(BlankLines, SkipGreaterThanTheRowIsIgnored) {
  const std::string page = pageWithDotsIn(5, {2}, 3);
  EXPECT_EQ(back(page, 5, 5), 3U);
  EXPECT_EQ(front(page, 5, 5), 1U);
  EXPECT_EQ(back(page, 5, ~0UL), 3U);
}

// Rows of 4 bytes that lie 3 bytes apart: the tested bytes of a row reach into the next.
TEST(BlankLines, RowsAreStrideBytesApart) {
  std::string page(20, '\0');
  page[9] = 1;  // the last byte of row 2 and the first of row 3
  EXPECT_EQ(wrenImageCountBlankLinesFromBack(bytes(page), 4, 5, 0, 3), 4U);
  EXPECT_EQ(wrenImageCountBlankLinesFromFront(bytes(page), 4, 5, 0, 3), 1U);
}

// The page is exactly as large as it says, so a sanitizer notices a read past its end.
TEST(BlankLines, TheRowPastThePageCountsAsBlank) {
  const std::vector<unsigned char> page(12, 0);
  EXPECT_EQ(wrenImageCountBlankLinesFromFront(page.data(), 4, 3, 0, 4), 3U);
}

TEST(BlankLines, OfRandomPagesAreThoseOfTheReference) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    wren_test::Dice dice(seed);
    wren_test::TestPage page = wren_test::randomPage(dice, dice.below(3));
    for (auto& level : page.pixels) {
      if (dice.below(8) != 0) level = 0;
    }
    const unsigned long skip = dice.below(static_cast<unsigned>(page.bytesPerLine) + 3);
    ASSERT_EQ(wrenImageCountBlankLinesFromBack(page.pixels.data(), page.bytesPerLine, page.height,
                                               skip, page.width),
              reference::wrenImageCountBlankLinesFromBack(page.pixels.data(), page.bytesPerLine,
                                                          page.height, skip, page.width))
        << "seed " << seed;
    ASSERT_EQ(wrenImageCountBlankLinesFromFront(page.pixels.data(), page.bytesPerLine, page.height,
                                                skip, page.width),
              reference::wrenImageCountBlankLinesFromFront(page.pixels.data(), page.bytesPerLine,
                                                           page.height, skip, page.width))
        << "seed " << seed;
  }
}

}  // namespace
