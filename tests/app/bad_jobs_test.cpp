// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs that cannot be printed, or not to their end: they cost themselves and nothing else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

using testing::HasSubstr;

constexpr const char* kPwg = "image/pwg-raster";
constexpr const char* kFeedAndCut = "1B 4A 10 1B 4A C0 1D 56 01 1F 1B 1F 42 65 65 70 06 1B 76";

std::string pwg(const std::vector<RasterPage>& pages) {
  return rasterStream(RasterKind::kPwg, pages);
}

std::string goodDocument() {
  return pwg({flatPage(576, 80, 255)});
}

struct BadHeader {
  const char* name;
  std::function<void(cups_page_header2_t&)> spoil;
  const char* message;
};

TEST(BadJobs, WithABadHeaderAreRefusedInWordsBeforeTheirFirstByte) {
  RunningApp app;
  const BadHeader headers[] = {
      {"huge height", [](auto& h) { h.cupsHeight = 0x7FFFFFFF; }, "pixels cannot be printed"},
      {"huge width", [](auto& h) { h.cupsWidth = h.cupsBytesPerLine = 0x7FFFFFF; },
       "pixels cannot be printed"},
      {"300 dpi", [](auto& h) { h.HWResolution[0] = h.HWResolution[1] = 300; }, "300 x 300"},
      {"no height", [](auto& h) { h.cupsHeight = 0; }, "the header of page 1 is damaged"},
      {"longer rows", [](auto& h) { h.cupsBytesPerLine = 577; }, "rows of the page have 577 bytes"},
      {"planes", [](auto& h) { h.cupsColorOrder = CUPS_ORDER_PLANAR; }, "not in 8-bit grey"},
      {"a colour space that does not exist",
       [](auto& h) {
         const int space = 99;
         std::memcpy(&h.cupsColorSpace, &space, sizeof space);
       },
       "not in 8-bit grey"},
      {"1 bit",
       [](auto& h) {
         h.cupsBitsPerColor = h.cupsBitsPerPixel = 1;
         h.cupsBytesPerLine = (h.cupsWidth + 7) / 8;
       },
       "not in 8-bit grey"},
  };
  for (const BadHeader& row : headers) {
    SCOPED_TRACE(row.name);
    RasterPage page = flatPage(576, 80, 255);
    row.spoil(page.header);
    const JobOutcome job = app.print(pwg({page}), kPwg);
    EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
    // Newer versions of CUPS refuse some of them before anybody sees the numbers.
    EXPECT_THAT(job.message,
                HasSubstr(cupsPassesOn(page) ? row.message : "header of page 1 is damaged"));
  }
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

// PAPPL refuses it by itself.
TEST(BadJobs, InColourAreRefusedInWords) {
  RunningApp app;
  RasterPage page = flatPage(576, 80, 255);
  page.header.cupsBitsPerPixel = 24;
  page.header.cupsNumColors = 3;
  page.header.cupsColorSpace = CUPS_CSPACE_SRGB;
  page.header.cupsBytesPerLine = 3 * 576;
  const JobOutcome job = app.print(pwg({page}), kPwg);
  EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
  EXPECT_EQ(job.message, "the page is not in 8-bit grey or black");
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

TEST(BadJobs, WithAnAttributeThatIsNotOfferedAreAbortedAndNameIt) {
  RunningApp app;
  const JobAttribute attributes[] = {
      JobAttribute::keyword("halftone-type", "stuki"),
      JobAttribute::integer("cash-drawer-pulse-width", 99),
      JobAttribute::integer("contrast", -101),
      JobAttribute::keyword("doc-cut-type", "full,partial"),
      JobAttribute::integer("doc-cut-type", 1),
  };
  for (const JobAttribute& attribute : attributes) {
    SCOPED_TRACE(attribute.name);
    const JobOutcome job = app.print(goodDocument(), kPwg, {attribute});
    EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
    EXPECT_THAT(job.message, HasSubstr(attribute.name));
    EXPECT_THAT(job.message, HasSubstr(attribute.value));
  }
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

struct BadStream {
  const char* name;
  std::string document;
  const char* message;
};

// PAPPL asks nobody about a document without a first header.
TEST(BadJobs, WithoutAFirstPageAreRefusedInWords) {
  RunningApp app;
  const BadStream streams[] = {
      {"another format", "%!PS" + goodDocument(), "this is neither PWG nor Apple raster"},
      {"a single byte", "R", "this is neither PWG nor Apple raster"},
      {"nothing but a mark", goodDocument().substr(0, 4), "the document has no pages"},
      {"part of a header", goodDocument().substr(0, 500), "the header of page 1 is cut off"},
  };
  for (const BadStream& row : streams) {
    SCOPED_TRACE(row.name);
    const JobOutcome job = app.print(row.document, kPwg);
    EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
    EXPECT_EQ(job.message, row.message);
  }
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

// Feed and cut, as a cancelled job ends: no drawer, no second beep.
TEST(BadJobs, ThatFailAfterAPageEndLikeCancelledOnes) {
  RunningApp app;
  RasterPage cut = flatPage(576, 80, 255);
  cut.pixels.resize(576 * 20);
  const JobOutcome job = app.print(pwg({flatPage(576, 80, 255), cut}), kPwg,
                                   {JobAttribute::keyword("cash-drawer-setting", "after"),
                                    JobAttribute::keyword("buzzer2-setting", "after")});
  EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
  EXPECT_THAT(job.message, HasSubstr("of 80 rows"));
  const std::string bytes = app.waitForPapers(1).at(0);
  EXPECT_EQ(printedPages(bytes).size(), 1U);
  EXPECT_THAT(hexOf(bytes), testing::EndsWith(kFeedAndCut));
}

// PAPPL takes them for whole ones.
TEST(BadJobs, WithABadHeaderBehindAPageEndLikeCancelledOnes) {
  RunningApp app;
  const BadStream streams[] = {
      {"part of one", goodDocument() + std::string(500, '\0'), "the header of page 2 is cut off"},
      {"noise", goodDocument() + std::string(3000, '\x99'), "the header of page 2 is damaged"},
  };
  std::size_t papers = 0;
  for (const BadStream& row : streams) {
    SCOPED_TRACE(row.name);
    const JobOutcome job =
        app.print(row.document, kPwg, {JobAttribute::keyword("cash-drawer-setting", "after")});
    EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
    EXPECT_EQ(job.message, row.message);
    EXPECT_THAT(hexOf(app.waitForPapers(++papers).back()), testing::EndsWith(kFeedAndCut));
  }
}

TEST(BadJobs, CutOffInTheirFirstPageWriteNothing) {
  RunningApp app;
  RasterPage cut = flatPage(576, 80, 255);
  cut.pixels.resize(576 * 20);
  const JobOutcome job = app.print(pwg({cut}), kPwg);
  EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

TEST(BadJobs, OfPrinterBytesAreRefused) {
  RunningApp app;
  const JobOutcome job = app.print("\x1B@\x1Bp", "application/vnd.wren-escpos");
  EXPECT_EQ(job.state, IPP_JSTATE_ABORTED);
  EXPECT_EQ(job.message, "printer bytes are not accepted");
  ASSERT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

TEST(BadJobs, OfNothingButNoiseDoNotEndTheServer) {
  RunningApp app;
  std::string noise = noisePage(576, 80, 7).pixels;
  for (const char* format : {"image/pwg-raster", "image/urf", "application/octet-stream",
                             "application/pdf", "image/jpeg", "image/png", "text/plain"}) {
    SCOPED_TRACE(format);
    app.print(noise, format);
    app.print("", format);
  }
  EXPECT_EQ(app.print(goodDocument(), kPwg).state, IPP_JSTATE_COMPLETED) << app.log();
}

}  // namespace
}  // namespace wren_test
