// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The reference implementations of page and job against examples computed by hand.

#include <gtest/gtest.h>

#include "tests/reference/job.h"
#include "tests/reference/page.h"

namespace {

using namespace reference;

// A page of 3 x 10 pixels with ink in the given rows.
Bytes pageWithInkIn(const std::vector<std::size_t>& rows) {
  Bytes page(30, 0);
  for (const std::size_t row : rows) page[row * 3 + 1] = 255;
  return page;
}

std::string trimsOf(const Bytes& page, std::uint8_t removeBlankEdges) {
  PageOptions options;
  options.removeBlankEdges = removeBlankEdges;
  const std::string line = printImage(options, page.data(), 3, 10, 3).log.back();
  return line.substr(line.find("topBlanks"));
}

TEST(ReferencePage, TrimsBlankRows) {
  const struct {
    std::vector<std::size_t> rowsWithInk;
    std::uint8_t removeBlankEdges;
    const char* trims;
  } kRows[] = {{{3}, 15, "topBlanks(2), bottomBlanks(4), h_fixed(2)"},
               {{0, 5}, 15, "topBlanks(4), bottomBlanks(6), h_fixed(2)"},
               {{}, 15, "topBlanks(10), bottomBlanks(0), h_fixed(10)"},
               {{0}, 15, "topBlanks(10), bottomBlanks(1), h_fixed(10)"},
               {{3}, 2, "topBlanks(2), bottomBlanks(0), h_fixed(10)"},
               {{3}, 8, "topBlanks(0), bottomBlanks(4), h_fixed(4)"},
               {{3}, 5, "topBlanks(0), bottomBlanks(0), h_fixed(10)"}};
  for (const auto& row : kRows) {
    EXPECT_EQ(trimsOf(pageWithInkIn(row.rowsWithInk), row.removeBlankEdges), row.trims);
  }
}

TEST(ReferencePage, SkippedPixelsAreNotInk) {
  const Bytes page = {0, 0, 9, 0, 0, 9, 0, 0, 9};
  EXPECT_EQ(wrenImageCountBlankLinesFromBack(page.data(), 3, 3, 0, 3), 3U);
  EXPECT_EQ(wrenImageCountBlankLinesFromBack(page.data(), 3, 3, 1, 3), 0U);
  EXPECT_EQ(wrenImageCountBlankLinesFromFront(page.data(), 3, 3, 1, 3), 3U);
  EXPECT_EQ(wrenImageCountBlankLinesFromBack(page.data(), 3, 3, 4, 3), 3U);
}

TEST(ReferencePage, BandsOfThirteenRows) {
  Bytes dots(13 * 2, 0);
  dots[0] = 1;             // row 0, column 0: bit 7 of the first band
  dots[7 * 2 + 1] = 127;   // row 7, column 1: bit 0
  dots[12 * 2 + 1] = 255;  // row 12, column 1: bit 3 of the second band
  EXPECT_EQ(bytesOf(doPrintImage(PageOptions(), dots.data(), 13, 2)),
            (Bytes{0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x02, 0x00, 0x80, 0x01, 0x1B, 0x4A,
                   0x10, 0x1B, 0x2A, 0x01, 0x02, 0x00, 0x00, 0x08, 0x1B, 0x4A, 0x0A}));
  EXPECT_EQ(bytesOf(doPrintImage(PageOptions(), dots.data(), 0, 2)), (Bytes{0x1B, 0x3C}));
}

TEST(ReferencePage, PacksToBits) {
  Bytes buffer = {1, 0, 0, 0, 0, 0, 0, 1, 1, 0};
  std::vector<std::string> log;
  EXPECT_EQ(GrayToMono(10, 1, buffer.data(), 0, log), 2);
  EXPECT_EQ(buffer[0], 0x81);
  EXPECT_EQ(buffer[1], 0x80);
  EXPECT_EQ(log.back(), "DEBUG:GrayToMono, bpl(10), h(1), skipPixels(0), wb(10)");
}

TEST(ReferencePage, DebugImageSizes) {
  const Bytes page(384 * 100, 0);
  const Bytes origin = saveImage(page.data(), 384, 100, 384, 8);
  EXPECT_EQ(origin.size(), 39478U);
  EXPECT_EQ(Bytes(origin.begin() + 2, origin.begin() + 6), (Bytes{0x36, 0x9A, 0, 0}));  // 39478
  EXPECT_EQ(saveImage(page.data(), 384, 100, 384, 1).size(), 4862U);
  const Bytes empty(10, 0);
  const Bytes full(10, 255);
  const Bytes white = saveImage(empty.data(), 10, 1, 10, 1);
  const Bytes black = saveImage(full.data(), 10, 1, 10, 1);
  EXPECT_EQ(Bytes(white.end() - 4, white.end()), (Bytes{0xFF, 0xFF, 0, 0}));
  EXPECT_EQ(Bytes(black.end() - 4, black.end()), (Bytes{0x00, 0x3F, 0, 0}));
  const Bytes odd = saveImage(empty.data(), 10, 1, 10, 8);
  EXPECT_EQ(odd.size(), 54U + 1024U + 10U);
  EXPECT_EQ(odd[34], 12);
}

TEST(ReferencePage, NegativeComesLast) {
  const Bytes page = {255, 0, 129, 128};
  PageOptions options;
  Bytes out(4, 0);
  std::vector<std::string> log;
  EXPECT_EQ(PageProcess(options, 0, page.data(), 4, 4, 1, out, log), 4);
  EXPECT_EQ(out, (Bytes{255, 0, 255, 0}));
  options.negative = true;
  PageProcess(options, 0, page.data(), 4, 4, 1, out, log);
  EXPECT_EQ(out, (Bytes{0, 255, 0, 255}));
}

TEST(ReferenceJob, SizesInNames) {
  const struct {
    const char* name;
    float width;
    float height;
  } kRows[] = {{"X80MMY200MM", 80.0F, 200.0F},
               {"X72D5MMY100MM", 72.5F, 100.0F},
               {"X80Y200M", 80.0F, 200.0F},
               {"X80MMY200", 0.0F, 0.0F},
               {"Letter", 0.0F, 0.0F},
               {"", 0.0F, 0.0F},
               {"X12345678901234567890MMY2MM", 0.0F, 0.0F}};
  for (const auto& row : kRows) {
    float width = 9.0F;
    float height = 9.0F;
    parsePageSize(row.name, width, height);
    EXPECT_EQ(width, row.width) << row.name;
    EXPECT_EQ(height, row.height) << row.name;
  }
}

TEST(ReferenceJob, ControlCommands) {
  JobSettings s;
  s.bidiPrinting = s.pageCutType = s.docCutType = s.buzzer1Setting = s.buzzer2Setting = 0;
  s.cashDrawerSetting = 0;
  EXPECT_EQ(bytesOf(jobSetup(s)),
            (Bytes{0x1B, 0x40, 0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x55, 0x00}));
  EXPECT_EQ(bytesOf(pageSetup(s)), Bytes());
  EXPECT_EQ(bytesOf(endPage(s)), (Bytes{0x1B, 0x4A, 0x10}));
  EXPECT_EQ(bytesOf(endJob(s)),
            (Bytes{0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76}));
  s.buzzer1Setting = 2;
  s.buzzer1OnTime = 12;
  s.buzzer1Repeat = 3;
  s.pageCutType = 1;
  EXPECT_EQ(bytesOf(endPage(s)),
            (Bytes{0x1B, 0x4A, 0x10, 0x1B, 0x42, 0x03, 0x01, 0x1D, 0x56, 0x00}));
  s.cashDrawerSetting = 2;
  s.cashDrawerPulseWidth = 4;
  s.docCutType = 2;
  s.feedCutAfterJobEnd = 5;
  EXPECT_EQ(bytesOf(endJob(s)),
            (Bytes{0x1B, 0x4A, 0x50, 0x1D, 0x56, 0x01, 0x1B, 0x70, 0x00, 0x96, 0x32,
                   0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76}));
}

TEST(ReferenceJob, MissingOptionsAreSentAsMinusOne) {
  JobSettings s;
  EXPECT_EQ(jobSetup(s).size(), 2U);
  EXPECT_EQ(jobSetup(s)[1].bytes.back(), 0x08);
  EXPECT_EQ(endJob(s)[0].bytes, (Bytes{0x1B, 0x4A, 0xF0}));
  s.buzzer1Setting = 1;
  EXPECT_EQ(bytesOf(pageSetup(s)), (Bytes{0x1B, 0x42, 0xFF, 0xFF}));
}

TEST(ReferenceJob, OverWidePagesKeepTheirMiddle) {
  JobSettings s;
  s.maxMediaWidth = 204.0;
  s.pageType = 1;
  Page page;
  page.bytesPerLine = page.width = 600;
  page.height = 1;
  page.pixels = Bytes(600, 0);
  page.pixels[11] = 255;   // cut away on the left
  page.pixels[12] = 255;   // first printed column
  page.pixels[586] = 255;  // last printed column
  page.pixels[587] = 255;  // cut away on the right
  const JobResult result = runJob(s, {page});
  Bytes band = {0x1B, 0x2A, 0x01, 0x3F, 0x02, 0x80};  // 575 columns
  band.resize(5 + 575, 0);
  band.back() = 0x80;
  EXPECT_EQ(result.commands[4].bytes, band);
  EXPECT_EQ(result.status, 0);
}

TEST(ReferenceJob, EndsOfARun) {
  Page page;
  page.bytesPerLine = page.width = page.height = 1;
  page.pixels = {0};
  Page deep = page;
  deep.bitsPerPixel = 1;
  Page broken = page;
  broken.readable = false;
  const JobSettings s;
  EXPECT_EQ(runJob(s, {}).log.back(), "ERROR:No pages found!");
  EXPECT_EQ(runJob(s, {}).status, 1);
  EXPECT_EQ(runJob(s, {page, deep}).status, 1);
  EXPECT_EQ(runJob(s, {page, deep}).log.back(),
            "ERROR:Unsupported bits per pixel : 1 ! Requires 8 bits per pixel!");
  const JobResult cut = runJob(s, {page, page, broken, page});
  EXPECT_EQ(cut.status, 0);
  EXPECT_EQ(cut.dumps.size(), 4U);
  EXPECT_EQ(cut.log[cut.log.size() - 2], "ERROR:Failed to get 3 page data!");
  EXPECT_EQ(cut.log.back(), "DEBUG:Ready to print.");
}

TEST(ReferenceJob, JobOptionsOverrideDefaults) {
  JobOptions options;
  options.ppd = {{"PageCutType", {"0", "1", "2"}, "1"},
                 {"HalftoneType", {"None", "Sierra"}, "None"}};
  std::vector<std::string> log;
  EXPECT_EQ(readSettings(options, log).pageCutType, 1);
  options.job = {{"PageCutType", "2"}, {"HalftoneType", "Sierra"}};
  log.clear();
  const JobSettings s = readSettings(options, log);
  EXPECT_EQ(s.pageCutType, 2);
  EXPECT_EQ(s.halftoneType, 6);
  EXPECT_EQ(s.docCutType, -1);
  EXPECT_EQ(log, (std::vector<std::string>{"DEBUG:getOptionChoiceIndex: PageCutType = 2", ""}));
}

}  // namespace
