// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/page_geometry.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using wren::printer::centrePage;
using wren::printer::excessPx;
using wren::printer::pageFault;
using wren::printer::PageGeometry;
using wren::printer::printableWidthPx;

TEST(PrintableWidth, IsPointsTimesResolutionBy72RoundedDown) {
  EXPECT_EQ(printableWidthPx(204.0, 203), 575U);
  EXPECT_EQ(printableWidthPx(204.5, 203), 576U);
  EXPECT_EQ(printableWidthPx(136.5, 203), 384U);
  EXPECT_EQ(printableWidthPx(72.0, 100), 100U);
  EXPECT_EQ(printableWidthPx(0.1, 203), 0U);
}

TEST(PrintableWidth, OfAWidthThatIsNotPositiveAndFiniteMeansNoLimit) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double width : {0.0, -0.0, -1.0, -1e300, infinity, -infinity, nan, 1e300}) {
    EXPECT_EQ(printableWidthPx(width, 203), 0U) << width;
  }
  EXPECT_EQ(printableWidthPx(100.0, 0), 0U);
  EXPECT_EQ(printableWidthPx(1e18, 72), 1000000000000000000U);
}

TEST(Excess, IsWhatLiesBeyondThePrintableWidth) {
  EXPECT_EQ(excessPx(600, 575), 25U);
  EXPECT_EQ(excessPx(575, 575), 0U);
  EXPECT_EQ(excessPx(576, 575), 1U);
  EXPECT_EQ(excessPx(10, 575), 0U);
  EXPECT_EQ(excessPx(600, 0), 0U);
  EXPECT_EQ(excessPx(600, std::numeric_limits<std::uint64_t>::max()), 0U);
}

TEST(PageFault, IsNullForPagesThatFitTheirBuffers) {
  EXPECT_EQ(pageFault({576, 1200, 576}, 0), nullptr);
  EXPECT_EQ(pageFault({10, 1, 12}, 0), nullptr);
  EXPECT_EQ(pageFault({10, 1, 10}, 9), nullptr);
  EXPECT_EQ(pageFault({1, 2147483647, 1}, 0), nullptr);
}

TEST(PageFault, NamesWhatIsWrong) {
  EXPECT_STREQ(pageFault({0, 1, 10}, 0), "its width is 0");
  EXPECT_STREQ(pageFault({11, 1, 10}, 0), "its width is greater than its bytes per line");
  EXPECT_STREQ(pageFault({1, 0x80000000U, 1}, 0), "it has more than 2147483647 bytes");
  EXPECT_STREQ(pageFault({10, 1, 12}, 10), "the printable width leaves nothing of it");
  EXPECT_STREQ(pageFault({10, 1, 100}, 90), "the printable width leaves nothing of it");
}

// 65536 rows of 65537 bytes are 65536 bytes when multiplied in 32 bits.
TEST(PageFault, SeesAProductThatWraps) {
  EXPECT_STREQ(pageFault({65537, 65536, 65537}, 0), "it has more than 2147483647 bytes");
  EXPECT_STREQ(pageFault({0xFFFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFFFU}, 0),
               "it has more than 2147483647 bytes");
}

std::string centred(std::string page, const PageGeometry& geometry, std::uint64_t excess) {
  centrePage(reinterpret_cast<std::uint8_t*>(page.data()), geometry, excess);
  return page;
}

TEST(CentrePage, MovesTheMiddleOfEachRowToItsStartAndLeavesTheRest) {
  EXPECT_EQ(centred("abcdefgABCDEFG", {7, 2, 7}, 4), "cdedefgCDEDEFG");
  EXPECT_EQ(centred("abcdefg", {7, 1, 7}, 0), "abcdefg");
}

TEST(CentrePage, CutsTheOddPixelOnTheRight) {
  EXPECT_EQ(centred("abcdef", {6, 1, 6}, 1), "abcdef");
  EXPECT_EQ(centred("abcdef", {6, 1, 6}, 3), "bcddef");
}

TEST(CentrePage, OfSixHundredPixelsKeepsBytes12To586) {
  std::string row;
  for (int i = 0; i < 600; ++i) row += static_cast<char>(i % 251);
  const std::string moved =
      centred(row, {600, 1, 600}, excessPx(600, printableWidthPx(204.0, 203)));
  EXPECT_EQ(moved.substr(0, 575), row.substr(12, 575));
  EXPECT_EQ(moved.substr(575), row.substr(575));
}

}  // namespace
