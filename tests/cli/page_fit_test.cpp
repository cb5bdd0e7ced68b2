// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/page_fit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

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

TEST(ShrunkPages, HaveNoAdviceWhereThePrinterHasNoCustomSizes) {
  EXPECT_EQ(describeLargePages({{72 * kMm, 353 * kMm}}, kPaper, {}),
            "page 1 (72 x 353 mm) was shrunk to fit the paper of 80 x 200 mm");
}

TEST(ShrunkPages, MayBeAsLongAsTheLongestCustomSize) {
  EXPECT_EQ(describeLargePages({{72 * kMm, 2999.9 * kMm}}, kPaper, kLimits),
            "page 1 (72 x 3000 mm) was shrunk to fit the paper of 80 x 200 mm; -o "
            "PageSize=Custom.72x3000mm prints it at its length");
  // A size is never shorter than the printer's shortest.
  EXPECT_EQ(describeLargePages({{72 * kMm, 9.2 * kMm}}, {72 * kMm, 8 * kMm}, kLimits),
            "page 1 (72 x 9 mm) was shrunk to fit the paper of 72 x 8 mm; -o "
            "PageSize=Custom.72x10mm prints it at its length");
}

TEST(CutPages, AreCountedAfterShrunkOnes) {
  const PageSizePt small = {72 * kMm, 150 * kMm};
  const PageSizePt lying = {100 * kMm, 50 * kMm};
  EXPECT_EQ(describeLargePages({small, lying, lying}, kPaper, kLimits),
            "page 2 (100 x 50 mm) and 1 more were cut off at the edges of the paper of 80 x 200 "
            "mm; -o fit-to-page shrinks, -o landscape turns");
  EXPECT_EQ(describeLargePages({lying, {210 * kMm, 297 * kMm}}, kPaper, kLimits),
            "page 2 (210 x 297 mm) was shrunk to fit the paper of 80 x 200 mm");
}

// A page of 100 x 400 mm in a raster of 80 x 200 mm. A script stands in for pdfinfo.
class PageFits : public testing::Test {
 protected:
  void SetUp() override {
    const char* path = std::getenv("PATH");
    path_ = path == nullptr ? "/usr/bin:/bin" : path;
    setenv("PATH", (folder_.path().string() + ":" + path_).c_str(), 1);
    pdfinfo("echo 'Page    1 size:  283.5 x 1134 pts'\n");
    writeRaster(227, 567);
  }
  void TearDown() override { setenv("PATH", path_.c_str(), 1); }

  void pdfinfo(const std::string& script) {
    std::filesystem::permissions(
        folder_.write("pdfinfo", "#!/bin/sh\necho \"$@\" >" + asked() + "\n" + script),
        std::filesystem::perms::owner_all);
  }
  void writeRaster(unsigned widthPt, unsigned lengthPt) {
    wren_test::RasterPage page = wren_test::flatPage(8, 8, 0);
    page.header.cupsPageSize[0] = static_cast<float>(widthPt);
    page.header.cupsPageSize[1] = static_cast<float>(lengthPt);
    raster_ = folder_.write("raster", wren_test::rasterStream(wren_test::RasterKind::kV2, {page}));
  }
  std::string asked() const { return (folder_.path() / "asked").string(); }
  std::string fit(const JobOptions& options = {}) const {
    return describePageFit("a.pdf", raster_, options, kLimits);
  }

  wren_test::TemporaryFolder folder_;
  std::string raster_;
  std::string path_;
};

TEST_F(PageFits, AreDescribedByThePagesOfTheDocumentAndThePaperOfTheRaster) {
  EXPECT_EQ(fit(), "page 1 (100 x 400 mm) was shrunk to fit the paper of 80 x 200 mm");
  EXPECT_EQ(wren_test::readFile(asked()),
            "-f 1 -l 9999 " + std::filesystem::absolute("a.pdf").string() + "\n");
  writeRaster(284, 600);
  EXPECT_EQ(fit(),
            "page 1 (100 x 400 mm) was shrunk to fit the paper of 100 x 212 mm; -o "
            "PageSize=Custom.100x400mm prints it at its length");
  writeRaster(284, 1134);
  EXPECT_EQ(fit(), "");
}

TEST_F(PageFits, AreNotDescribedWhereTheJobSetsThem) {
  for (const char* name : {"crop-to-fit", "fill", "fit-to-page", "fitplot", "landscape",
                           "number-up", "natural-scaling", "orientation-requested", "page-ranges",
                           "print-scaling", "scaling", "Fit-To-Page"}) {
    EXPECT_EQ(fit({{"cpi", "14"}, {name, "1"}}), "") << name;
  }
  EXPECT_NE(fit({{"cpi", "14"}, {"PageSize", "X80MMY200MM"}, {"position", "top"}}), "");
}

TEST_F(PageFits, AreNotDescribedWhereNothingIsKnown) {
  pdfinfo("echo 'Page    1 size:  283.5 x 1134 pts'; exit 1\n");
  EXPECT_EQ(fit(), "");
  pdfinfo("");
  EXPECT_EQ(fit(), "");
  pdfinfo("echo 'Page    1 size:  283.5 x 1134 pts'\n");
  folder_.write("raster", "no raster");
  EXPECT_EQ(fit(), "");
  folder_.write("raster", "RaS2");
  EXPECT_EQ(fit(), "");
  std::filesystem::remove(raster_);
  EXPECT_EQ(fit(), "");
}

TEST(ShrunkPages, AreCounted) {
  const PageSizePt small = {72 * kMm, 150 * kMm};
  const PageSizePt large = {210 * kMm, 297 * kMm};
  EXPECT_EQ(describeLargePages({small, large, small, large, large}, kPaper, kLimits),
            "page 2 (210 x 297 mm) and 2 more were shrunk to fit the paper of 80 x 200 mm");
}

}  // namespace
}  // namespace wren::cli
