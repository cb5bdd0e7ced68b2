// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/contact_sheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "common/glyphs.h"

namespace wren::preview {
namespace {

// No part of a sheet but the test's pictures has this level.
constexpr std::uint8_t kMarkerLevel = 77;

Picture uniform(std::uint32_t widthPx, std::uint32_t heightPx) {
  Picture picture = Picture::white(widthPx, heightPx);
  std::fill(picture.pixels.begin(), picture.pixels.end(), kMarkerLevel);
  return picture;
}

std::vector<SheetCell> cellsOf(std::size_t count, const Picture& picture) {
  return std::vector<SheetCell>(count, {"label", picture});
}

bool isInk(const Picture& picture, std::uint32_t x, std::uint32_t y) {
  return picture.row(y)[x] < kMarkerLevel;
}

struct TextPoint {
  std::uint32_t x;
  std::uint32_t y;
  bool isInk;
};

// All pixels of a text, ink first: there is much more paper on a sheet.
std::vector<TextPoint> pointsOf(const std::string& text) {
  std::vector<TextPoint> points;
  for (const bool ink : {true, false}) {
    for (std::uint32_t y = 0; y < kGlyphRows; ++y) {
      for (std::uint32_t x = 0; x < text.size() * kGlyphAdvance; ++x) {
        if (textPixel(text, x, y) == ink) points.push_back({x, y, ink});
      }
    }
  }
  return points;
}

// The left edges of a text, from top to bottom.
std::vector<std::uint32_t> placesOf(const Picture& sheet, const std::string& text) {
  std::vector<std::uint32_t> places;
  const auto width = static_cast<std::uint32_t>(text.size()) * kGlyphAdvance;
  const auto points = pointsOf(text);
  const auto isTextAt = [&](std::uint32_t left, std::uint32_t top) {
    return std::all_of(points.begin(), points.end(), [&](const TextPoint& point) {
      return isInk(sheet, left + point.x, top + point.y) == point.isInk;
    });
  };
  for (std::uint32_t y = 0; y + kGlyphRows <= sheet.heightPx; ++y) {
    for (std::uint32_t x = 0; x + width <= sheet.widthPx; ++x) {
      if (isTextAt(x, y)) places.push_back(x);
    }
  }
  return places;
}

std::size_t countOf(const Picture& sheet, const std::string& text) {
  return placesOf(sheet, text).size();
}

std::size_t markerPixels(const Picture& sheet) {
  return static_cast<std::size_t>(
      std::count(sheet.pixels.begin(), sheet.pixels.end(), kMarkerLevel));
}

TEST(ContactSheet, OfNothingIsEmpty) {
  EXPECT_EQ(drawContactSheet({}, 800).widthPx, 0u);
  EXPECT_EQ(drawContactSheet({{"heading", {}}}, 800).heightPx, 0u);
}

TEST(ContactSheet, ShowsEveryPictureWithItsLabelAndHeading) {
  const Picture small = uniform(40, 20);
  const Picture sheet = drawContactSheet(
      {{"Burkes", {{"dark", small}, {"light", small}}}, {"Sierra", {{"plain", small}}}}, 800);
  EXPECT_EQ(markerPixels(sheet), 3u * 40 * 20);
  for (const char* label : {"dark", "light", "plain"}) EXPECT_EQ(countOf(sheet, label), 1u);
  for (const char* heading : {"Burkes", "Sierra"}) EXPECT_EQ(countOf(sheet, heading), 1u);
}

TEST(ContactSheet, KeepsTheDotsOfAPictureThatFits) {
  Picture picture = uniform(30, 2);
  picture.pixels[1] = 3;
  picture.pixels[31] = 99;
  const Picture sheet = drawContactSheet({{"", {{"", picture}}}}, 400);
  const auto start = std::find(sheet.pixels.begin(), sheet.pixels.end(), kMarkerLevel);
  ASSERT_NE(start, sheet.pixels.end());
  EXPECT_EQ(std::vector(start, start + 30),
            std::vector(picture.pixels.begin(), picture.pixels.begin() + 30));
  const auto second = start + sheet.widthPx;
  EXPECT_EQ(std::vector(second, second + 30),
            std::vector(picture.pixels.begin() + 30, picture.pixels.end()));
}

class SheetWidth : public testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(SheetWidth, IsAtMostTheMaximum) {
  const auto [cells, pictureWidth, maximum] = GetParam();
  const auto picture = uniform(static_cast<std::uint32_t>(pictureWidth), 8);
  const Picture sheet =
      drawContactSheet({{"heading", cellsOf(static_cast<std::size_t>(cells), picture)}}, maximum);
  EXPECT_LE(sheet.widthPx, static_cast<std::uint32_t>(maximum));
  EXPECT_EQ(sheet.pixels.size(), std::size_t{sheet.widthPx} * sheet.heightPx);
}

INSTANTIATE_TEST_SUITE_P(Sheets, SheetWidth,
                         testing::Combine(testing::Values(1, 2, 5, 9, 40),
                                          testing::Values(1, 180, 576, 832, 3000),
                                          testing::Values(64, 65, 200, 411, 800, 1600)));

TEST(ContactSheet, IsAsNarrowAsItsPicturesAllow) {
  // Two pictures with frames of one pixel, the gap and the margins of 16 pixels.
  EXPECT_EQ(drawContactSheet({{"", cellsOf(2, uniform(300, 8))}}, 4000).widthPx,
            2u * 302 + 16 + 2 * 16);
}

TEST(ContactSheet, IsAtLeast64PixelsWide) {
  EXPECT_EQ(drawContactSheet({{"", cellsOf(1, uniform(100, 8))}}, -5).widthPx, 64u);
}

TEST(ContactSheet, ScalesAllPicturesByTheSameFactor) {
  // Two cells in 800 - 2 * 16 - 16 pixels are 376 wide; within their frames the wider picture
  // shrinks from 748 to 374, so the other one from 100 x 60 to 50 x 30.
  const Picture sheet =
      drawContactSheet({{"", {{"", uniform(748, 20)}, {"", uniform(100, 60)}}}}, 800);
  EXPECT_EQ(markerPixels(sheet), 374u * 10 + 50u * 30);
}

TEST(ContactSheet, ContinuesARowOnTheNextLineBeforeLabelsGetTooNarrow) {
  // Three cells of at least 180 pixels with their gaps and margins fit in 604, so five are
  // arranged as three and two.
  const Picture sheet = drawContactSheet({{"", cellsOf(5, uniform(576, 8))}}, 604);
  const auto places = placesOf(sheet, "label");
  ASSERT_EQ(places.size(), 5u);
  EXPECT_EQ(places[0], places[3]);
  EXPECT_EQ(places[1], places[4]);
  EXPECT_LT(places[1], places[2]);
}

TEST(ContactSheet, RepeatsHeadingAndLabelsDownALongPicture) {
  const Picture sheet = drawContactSheet({{"Burkes", cellsOf(2, uniform(100, 2000))}}, 800);
  // Parts of at most 900 rows: three.
  EXPECT_EQ(countOf(sheet, "label"), 2u * 3);
  for (const char* heading : {"Burkes (1 of 3)", "Burkes (2 of 3)", "Burkes (3 of 3)"}) {
    EXPECT_EQ(countOf(sheet, heading), 1u) << heading;
  }
  EXPECT_EQ(markerPixels(sheet), 2u * 100 * 2000);
}

// The frame is drawn right below the label's lowest row plus its padding.
TEST(ContactSheet, KeepsLabelsClearOfTheirPictures) {
  const Picture sheet = drawContactSheet({{"", {{"gjpqy", uniform(100, 8)}}}}, 800);
  const auto first = std::find(sheet.pixels.begin(), sheet.pixels.end(), kMarkerLevel);
  const auto pictureTop = static_cast<std::uint32_t>(first - sheet.pixels.begin()) / sheet.widthPx;
  std::uint32_t lowestInk = 0;
  for (std::uint32_t y = 0; y < pictureTop; ++y) {
    for (std::uint32_t x = 0; x < sheet.widthPx; ++x) {
      if (isInk(sheet, x, y)) lowestInk = y;
    }
  }
  EXPECT_GE(pictureTop - lowestInk, 4u);
}

TEST(ContactSheet, LeavesOutThePartsThatAShorterPictureDoesNotHave) {
  const Picture sheet =
      drawContactSheet({{"", {{"", uniform(100, 1000)}, {"", uniform(100, 10)}}}}, 800);
  EXPECT_EQ(markerPixels(sheet), 100u * 1000 + 100u * 10);
}

TEST(ContactSheet, WrapsALabelToTheWidthOfItsCell) {
  // A cell of 180 pixels holds 15 letters.
  const Picture sheet = drawContactSheet(
      {{"", {{"ordered dither 4 x 4", uniform(50, 8)}, {"JarvisJudiceNinke", uniform(50, 8)}}}},
      800);
  for (const char* line : {"ordered dither", "4 x 4", "JarvisJudiceNin", "ke"}) {
    EXPECT_EQ(countOf(sheet, line), 1u) << line;
  }
}

void fill(Picture& picture, const Area& area, std::uint8_t level) {
  for (std::uint32_t y = 0; y < area.heightPx; ++y) {
    std::fill_n(picture.row(area.top + y) + area.left, area.widthPx, level);
  }
}

void write(Picture& picture, const std::string& text, std::uint32_t left, std::uint32_t top) {
  for (std::uint32_t y = 0; y < kGlyphRows; ++y) {
    for (std::uint32_t x = 0; x < text.size() * kGlyphAdvance; ++x) {
      if (textPixel(text, x, y)) picture.row(top + y)[left + x] = 30;
    }
  }
}

// Margins of 16 pixels and a cell of 180. From the top: the margin; the heading in a band of 4 + 24
// + 4, and 8 pixels below; the label of 24, and 4 below; the picture in its frame of 1, and a gap
// of 16.
TEST(ContactSheet, IsLaidOutLikeThis) {
  Picture expected = Picture::white(212, 16 + 40 + 28 + 10 + 16);
  fill(expected, {16, 16, 180, 32}, 232);
  write(expected, "Burkes", 20, 20);
  write(expected, "dark", 16, 56);
  fill(expected, {16, 84, 102, 10}, 200);
  fill(expected, {17, 85, 100, 8}, kMarkerLevel);
  const Picture sheet = drawContactSheet({{"Burkes", {{"dark", uniform(100, 8)}}}}, 800);
  EXPECT_EQ(sheet.widthPx, expected.widthPx);
  EXPECT_EQ(sheet.heightPx, expected.heightPx);
  EXPECT_EQ(sheet.pixels, expected.pixels);
}

// Two columns of 180 pixels with the gap of 16; the labels take as many lines as the longest.
TEST(ContactSheet, LaysItsColumnsOutSideBySide) {
  Picture expected = Picture::white(16 + 180 + 16 + 180 + 16, 16 + 52 + 32 + 16);
  write(expected, "one", 16, 16);
  write(expected, "ordered dither", 212, 16);
  write(expected, "4 x 4", 212, 40);
  fill(expected, {16, 68, 102, 10}, 200);
  fill(expected, {17, 69, 100, 8}, kMarkerLevel);
  fill(expected, {212, 68, 52, 32}, 200);
  fill(expected, {213, 69, 50, 30}, kMarkerLevel);
  const Picture sheet = drawContactSheet(
      {{"", {{"one", uniform(100, 8)}, {"ordered dither 4 x 4", uniform(50, 30)}}}}, 800);
  EXPECT_EQ(sheet.widthPx, expected.widthPx);
  EXPECT_EQ(sheet.heightPx, expected.heightPx);
  EXPECT_EQ(sheet.pixels, expected.pixels);
}

// A sheet of 212 pixels has a band of 180, that is 14 letters of 12 within 4 pixels on both sides.
TEST(ContactSheet, WrapsAHeadingToTheWidthOfTheSheet) {
  const Picture sheet =
      drawContactSheet({{"JarvisJudiceNinke at 203 dpi", {{"", uniform(50, 8)}}}}, 212);
  for (const char* line : {"JarvisJudiceNi", "nke at 203 dpi"}) {
    EXPECT_EQ(countOf(sheet, line), 1u) << line;
  }
}

// A part has its label in 28 rows, its rows in a frame, and the gap.
TEST(ContactSheet, CutsAPictureOfMoreThan900RowsInEqualParts) {
  const auto heightFor = [](std::uint32_t rows) {
    return drawContactSheet({{"", {{"label", uniform(100, rows)}}}}, 300).heightPx;
  };
  EXPECT_EQ(heightFor(900), 16u + (28 + 900 + 18));
  EXPECT_EQ(heightFor(901), 16u + 2 * (28 + 451 + 18));
  EXPECT_EQ(heightFor(1800), 16u + 2 * (28 + 900 + 18));
  EXPECT_EQ(heightFor(1801), 16u + 3 * (28 + 601 + 18));
}

}  // namespace
}  // namespace wren::preview
