// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/self_test_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "common/glyphs.h"
#include "tests/reference/page.h"

namespace wren::job {
namespace {

constexpr double kWidths[] = {136.5, 204.5, 295.3};  // points: 384, 576 and 832 dots
constexpr std::uint32_t kRampRows = 40;

Settings settingsOf(double maxMediaWidth) {
  Settings settings;
  settings.maxMediaWidth = maxMediaWidth;
  return settings;
}

TEST(SelfTestPage, IsAsWideAsThePrinter) {
  const std::pair<double, std::uint32_t> rows[] = {
      {136.5, 384}, {204.5, 576}, {295.3, 832}, {0.0, 576},
      {1.0, 96},    {1e9, 4096},  {-5.0, 576},  {std::numeric_limits<double>::infinity(), 576}};
  for (const auto& [points, dots] : rows) {
    const auto page = drawSelfTestPage(settingsOf(points));
    EXPECT_EQ(page.widthPx, dots) << points;
    EXPECT_EQ(page.dots.size(), std::size_t{dots} * page.heightPx);
  }
}

TEST(SelfTestPage, ConsistsOfDotsAndPaper) {
  const auto page = drawSelfTestPage(settingsOf(204.5));
  EXPECT_TRUE(std::all_of(page.dots.begin(), page.dots.end(),
                          [](auto dot) { return dot == 0 || dot == 255; }));
}

// A ramp of grey levels from paper to full ink, halftoned by the reference implementation.
reference::Bytes referenceRamp(int type, std::uint32_t width) {
  reference::Bytes levels(std::size_t{width} * kRampRows);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    levels[i] = static_cast<std::uint8_t>(i % width * 255 / (width - 1));
  }
  reference::Bytes dots(levels.size());
  std::vector<std::string> log;
  reference::PageOptions options;
  options.halftoneType = type;
  reference::PageProcess(options, type, levels.data(), static_cast<int>(width),
                         static_cast<int>(width), kRampRows, dots, log);
  return dots;
}

// The rows of a page at which `part` begins, from `from` on; -1 if it is nowhere.
long rowOf(const SelfTestPage& page, const std::vector<std::uint8_t>& part, long from = 0) {
  const std::size_t width = page.widthPx;
  for (auto row = static_cast<std::size_t>(from); row * width + part.size() <= page.dots.size();
       ++row) {
    if (std::equal(part.begin(), part.end(), page.dots.begin() + static_cast<long>(row * width))) {
      return static_cast<long>(row);
    }
  }
  return -1;
}

TEST(SelfTestPage, ShowsEveryHalftoneTypeAsARamp) {
  for (const double points : kWidths) {
    const auto page = drawSelfTestPage(settingsOf(points));
    long row = 0;
    for (int type = 0; type <= 8; ++type) {
      const long next = rowOf(page, referenceRamp(type, page.widthPx), row);
      EXPECT_GE(next, row) << "type " << type << " on " << page.widthPx << " dots";
      row = next;
    }
  }
}

// The first row at which a page has a text at this column; -1 if it is nowhere.
long rowOfText(const SelfTestPage& page, const std::string& text, std::uint32_t column = 0) {
  for (std::uint32_t top = 0; top + kGlyphRows <= page.heightPx; ++top) {
    bool isSame = true;
    for (std::uint32_t y = 0; isSame && y < kGlyphRows; ++y) {
      for (std::uint32_t x = 0; isSame && x < text.size() * kGlyphAdvance; ++x) {
        const std::size_t at = std::size_t{top + y} * page.widthPx + column + x;
        isSame = (page.dots[at] != 0) == textPixel(text, x, y);
      }
    }
    if (isSame) return top;
  }
  return -1;
}

bool showsText(const SelfTestPage& page, const std::string& text, std::uint32_t column = 0) {
  return rowOfText(page, text, column) >= 0;
}

TEST(SelfTestPage, GoesFromItsTitleToTheCodes) {
  const auto page = drawSelfTestPage(settingsOf(136.5));
  long row = -1;
  for (const char* text : {"Wren " WREN_VERSION, "Width: 384 dots", "Grid in mm",
                           "JarvisJudiceNinke: Sierra", "PageType 0"}) {
    const long next = rowOfText(page, text);
    EXPECT_GT(next, row) << text;
    row = next;
  }
  EXPECT_GT(rowOfText(page, "WREN-TEST", (384 - 9 * 12) / 2), row);
}

TEST(SelfTestPage, NamesVersionWidthAndSettings) {
  Settings settings = settingsOf(136.5);
  settings.modelNumber = 58;
  settings.docCutType = 2;
  settings.pageCutType = -1;
  settings.brightness = -25;
  settings.halftoneType = JarvisJudiceNinke;
  settings.debugImages = false;
  const auto page = drawSelfTestPage(settings);
  for (const char* text :
       {"Wren " WREN_VERSION ", 58 mm paper", "Width: 384 dots, 48.0 mm", "Grid in mm, 203 dpi",
        "JarvisJudiceNinke: Sierra", "DocCutType 2", "PageCutType -", "FeedCutAfterJobEnd 0",
        "Brightness -25", "HalftoneType JarvisJudiceNinke", "DebugImages Off"}) {
    EXPECT_TRUE(showsText(page, text)) << text;
  }
  EXPECT_FALSE(showsText(page, "DocCutType 1"));
}

TEST(SelfTestPage, UsesTheWidthOfWidePaperForTwoColumns) {
  const auto page = drawSelfTestPage(settingsOf(295.3));
  EXPECT_TRUE(showsText(page, "PageType 0", 0));
  EXPECT_TRUE(showsText(page, "Brightness 0", 384));
  EXPECT_TRUE(showsText(page, "384 dots: 58 mm paper"));
  EXPECT_TRUE(showsText(page, "576 dots: 80 mm paper"));
}

// Lines at each millimetre: 203 dots to 25.4 mm, to the nearest dot. The row between two lines
// across shows the upright ones.
TEST(SelfTestPage, HasAGridOfMillimetres) {
  const auto page = drawSelfTestPage(settingsOf(136.5));
  std::vector<std::uint8_t> row(384);
  for (int mm = 0; mm <= 48; ++mm) {
    const int dot = static_cast<int>(mm * 203 / 25.4 + 0.5);
    const int thickness = mm % 10 == 0 ? 3 : (mm % 5 == 0 ? 2 : 1);
    for (int x = dot; x < std::min(dot + thickness, 384); ++x)
      row[static_cast<std::size_t>(x)] = 255;
  }
  const long first = rowOf(page, row);
  ASSERT_GE(first, 0);
  // 3 rows of the line at 0 mm, 5 free ones, the line at 1 mm.
  const std::vector<std::uint8_t> line(384, 255);
  EXPECT_EQ(rowOf(page, line, first - 3), first - 3);
  EXPECT_EQ(rowOf(page, line, first), first + 5);
}

TEST(SelfTestPage, LeavesTheCodesOutWhereTheyDoNotFit) {
  EXPECT_TRUE(showsText(drawSelfTestPage(settingsOf(136.5)), "WREN-TEST", (384 - 9 * 12) / 2));
  const auto narrow = drawSelfTestPage(settingsOf(100.0));
  EXPECT_EQ(narrow.widthPx, 281U);
  EXPECT_FALSE(showsText(narrow, "WREN-TEST", (281 - 9 * 12) / 2));
}

// From one strip to the next nothing is left over.
TEST(SelfTestPage, IsTheSameEachTime) {
  const auto page = drawSelfTestPage(settingsOf(204.5));
  EXPECT_EQ(rowOf(page, drawSelfTestPage(settingsOf(204.5)).dots), 0);
}

}  // namespace
}  // namespace wren::job
