// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/page_fit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;

constexpr double kMm = 72 / 25.4;
constexpr PageSizePt kPaper = {80 * kMm, 200 * kMm};
// 25 x 10 mm to 3000 mm.
constexpr filter::CustomSizeLimits kLimits = {70.9F, 28.3F, 204.5F, 8503.9F};

TEST(PageSizes, AreReadAsThePagesAreShown) {
  EXPECT_THAT(
      parsePageSizes("Pages:           3\n"
                     "Page    1 size:  204.09 x 28346.5 pts\nPage    1 rot:   0\n"
                     "Page    2 size:  595 x 842 pts (A4)\nPage    2 rot:   90\n"
                     "Page 9999 size:  226.772 x 425.2 pts\nPage 9999 rot:   180\n"
                     "File size:       2190 bytes\n"),
      ElementsAre(FieldsAre(204.09, 28346.5), FieldsAre(842, 595), FieldsAre(226.772, 425.2)));
  EXPECT_THAT(parsePageSizes("Page size: banana\nPage    1 rot:   90\n"), ElementsAre());
}

TEST(ShrunkPages, AreThoseLargerThanThePaper) {
  const PageSizePt kFitting[] = {
      {80 * kMm, 200 * kMm}, {72 * kMm, 150 * kMm}, {81.5 * kMm, 203.9 * kMm}};
  for (const PageSizePt& page : kFitting) {
    EXPECT_EQ(describeLargePages({page, page}, kPaper, kLimits), "") << page.length;
  }
  EXPECT_EQ(describeLargePages({}, kPaper, kLimits), "");
}

TEST(ShrunkPages, AreNamedWithTheSizeThatPrintsThemAtTheirLength) {
  const struct {
    PageSizePt page;
    const char* line;
  } kPages[] = {
      {{72 * kMm, 353 * kMm},
       "page 1 (72 x 353 mm) was shrunk to fit the paper of 80 x 200 mm; -o "
       "PageSize=Custom.72x353mm prints it at its length"},
      {{71.5 * kMm, 205.2 * kMm},
       "page 1 (72 x 205 mm) was shrunk to fit the paper of 80 x 200 mm; -o "
       "PageSize=Custom.72x206mm prints it at its length"},
      {{20 * kMm, 300 * kMm},
       "page 1 (20 x 300 mm) was shrunk to fit the paper of 80 x 200 mm; -o "
       "PageSize=Custom.25x300mm prints it at its length"},
      {{72 * kMm, 10000 * kMm},
       "page 1 (72 x 10000 mm) was shrunk to fit the paper of 80 x 200 mm; no page can be longer "
       "than 3000 mm, so only a document of several pages prints at its length"},
      // Wider than the paper: no length helps.
      {{210 * kMm, 297 * kMm}, "page 1 (210 x 297 mm) was shrunk to fit the paper of 80 x 200 mm"},
      {{100 * kMm, 90 * kMm}, "page 1 (100 x 90 mm) was shrunk to fit the paper of 80 x 200 mm"},
  };
  for (const auto& [page, line] : kPages) {
    EXPECT_EQ(describeLargePages({page}, kPaper, kLimits), line);
  }
}

TEST(CutPages, AreThoseThatWouldFitOnTheirSide) {
  EXPECT_EQ(describeLargePages({{100 * kMm, 50 * kMm}}, kPaper, kLimits),
            "page 1 (100 x 50 mm) was cut off at the edges of the paper of 80 x 200 mm; -o "
            "fit-to-page shrinks, -o landscape turns");
  EXPECT_EQ(describeLargePages({{25 * kMm, 60 * kMm}}, {80 * kMm, 30 * kMm}, kLimits),
            "page 1 (25 x 60 mm) was cut off at the edges of the paper of 80 x 30 mm; -o "
            "fit-to-page shrinks, -o landscape turns");
}

TEST(ShrunkPages, AreCounted) {
  const PageSizePt small = {72 * kMm, 150 * kMm};
  const PageSizePt large = {210 * kMm, 297 * kMm};
  EXPECT_EQ(describeLargePages({small, large, small, large, large}, kPaper, kLimits),
            "page 2 (210 x 297 mm) and 2 more were shrunk to fit the paper of 80 x 200 mm");
}

}  // namespace
}  // namespace wren::cli
