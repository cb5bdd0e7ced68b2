// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/paper_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "common/glyphs.h"
#include "escpos/reader.h"
#include "tests/escpos/printer_streams.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

std::vector<std::vector<std::uint8_t>> painted(PaperPicture& picture) {
  std::vector<std::vector<std::uint8_t>> rows(picture.height());
  for (std::uint64_t y = 0; y < picture.height(); ++y) {
    rows[y].resize(picture.width());
    picture.paintRow(y, rows[y]);
  }
  return rows;
}

std::size_t countOf(const std::vector<std::vector<std::uint8_t>>& rows, Ink ink) {
  std::size_t count = 0;
  for (const auto& row : rows) count += std::count(row.begin(), row.end(), ink);
  return count;
}

escpos::Paper paperOf(const Bytes& stream) {
  return escpos::readAll(stream).paper;
}

TEST(PaperPicture, HasOnePixelForADot) {
  const auto paper = paperOf(bitImage(1, hex("80 40 80 00 00 00 00 00 FF")) + feed(16));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {});
  EXPECT_EQ(picture.width(), 9u);
  EXPECT_EQ(picture.height(), 8u);
  EXPECT_EQ(picture.pixelsPerInch(), 203u);
  EXPECT_EQ(picture.inkCount(), 2u);
  const auto rows = painted(picture);
  EXPECT_EQ(rows[0], (std::vector<std::uint8_t>{1, 0, 1, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(rows[1], (std::vector<std::uint8_t>{0, 1, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(PaperPicture, ScalesADotToASquareOfPixels) {
  const auto paper = paperOf(bitImage(1, hex("80 00 00 00 00 00 00 80")) + feed(2));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 3, false});
  EXPECT_EQ(picture.width(), 24u);
  EXPECT_EQ(picture.height(), 3u);
  EXPECT_EQ(picture.pixelsPerInch(), 609u);
  const auto rows = painted(picture);
  EXPECT_EQ(countOf(rows, kDot), 18u);
  EXPECT_EQ(rows[2][2], kDot);
  EXPECT_EQ(rows[2][3], kPaper);
}

TEST(PaperPicture, IsEmptyWithoutPaper) {
  const auto paper = paperOf({});
  const PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
  EXPECT_EQ(picture.width(), 0u);
  EXPECT_EQ(picture.height(), 0u);
}

TEST(PaperPicture, ShowsOnlyItsPiece) {
  const auto paper = paperOf(bitImage(1, hex("FF")) + feed(16) + hex("1D5600") +
                             bitImage(1, hex("01")) + feed(16));
  const auto parts = escpos::pieces(paper);
  ASSERT_EQ(parts.size(), 2u);
  PaperPicture second(paper, parts[1], {});
  const auto rows = painted(second);
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(countOf(rows, kDot), 1u);
  EXPECT_EQ(rows[7][0], kDot);
}

// At 254 dpi a millimetre is ten rows.
TEST(Marks, ScaleHasATickForEveryMillimetre) {
  const auto paper = paperOf(feed(200) + feed(200) + feed(40));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {254, 1, true});
  const auto rows = painted(picture);
  const auto before =
      static_cast<std::size_t>(std::find(rows[1].begin(), rows[1].end(), kPaper) - rows[1].begin());
  std::vector<std::size_t> ticks;
  for (std::size_t y = 0; y < rows.size(); ++y) {
    if (rows[y][before - 1] == kScale) ticks.push_back(y);
  }
  std::vector<std::size_t> expected;
  for (std::size_t y = 0; y <= 220; y += 10) expected.push_back(y);
  EXPECT_EQ(ticks, expected);
}

// Millimetres of the ruler at 254 dpi, where one is ten rows and the text is not enlarged.
TEST(Marks, ScaleHasTicksOfThreeLengths) {
  const auto paper = paperOf(feed(200) + feed(200) + feed(40));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {254, 1, true});
  const auto rows = painted(picture);
  const auto paperEdge =
      static_cast<std::size_t>(std::find(rows[1].begin(), rows[1].end(), kPaper) - rows[1].begin());
  const auto tickAt = [&](std::size_t mm) {
    std::size_t length = 0;
    while (rows[mm * 10][paperEdge - length - 1] == kScale) ++length;
    return length;
  };
  for (std::size_t mm = 0; mm <= 22; ++mm) {
    const std::size_t expected = mm % 10 == 0 ? 18 : mm % 5 == 0 ? 12 : 6;
    EXPECT_EQ(tickAt(mm), expected) << mm << " mm";
  }
}

// At 406 dpi text and ticks are drawn with pixels of twice the size.
TEST(Marks, GrowWithTheResolution) {
  const auto paper = paperOf(feed(200));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {406, 1, true});
  const auto rows = painted(picture);
  EXPECT_EQ(std::count(rows[0].begin(), rows[0].end(), kScale), 36);
}

// From 300 pixels an inch on, half way between 200 and 400.
TEST(Marks, GrowFromTheNearerResolutionOn) {
  const auto tickAt = [](unsigned dpi, unsigned scale) {
    const auto paper = paperOf(feed(200));
    PaperPicture picture(paper, escpos::wholeStrip(paper), {dpi, scale, true});
    const auto rows = painted(picture);
    return std::count(rows[0].begin(), rows[0].end(), kScale);
  };
  EXPECT_EQ(tickAt(50, 1), 18);
  EXPECT_EQ(tickAt(299, 1), 18);
  EXPECT_EQ(tickAt(300, 1), 36);
  EXPECT_EQ(tickAt(150, 2), 36);
  EXPECT_EQ(tickAt(500, 1), 54);
}

using Rows = std::vector<std::vector<std::uint8_t>>;

void fillRow(Rows& rows, std::size_t y, std::size_t left, std::size_t right, Ink ink) {
  std::fill(rows[y].begin() + static_cast<std::ptrdiff_t>(left),
            rows[y].begin() + static_cast<std::ptrdiff_t>(right), ink);
}

void write(Rows& rows, const std::string& text, std::size_t left, std::size_t top, Ink ink) {
  for (unsigned y = 0; y < kGlyphRows; ++y) {
    for (unsigned x = 0; x < text.size() * kGlyphAdvance; ++x) {
      if (textPixel(text, x, y)) rows[top + y][left + x] = ink;
    }
  }
}

// The picture in letters, so that a difference shows.
std::string drawn(const Rows& rows) {
  constexpr char kLetters[] = ".# 'CDB";
  std::string text;
  for (const auto& row : rows) {
    for (const std::uint8_t ink : row) text += kLetters[ink];
    text += '\n';
  }
  return text;
}

// 100 rows at 203 dpi are 12.5 mm. From the left: 8 pixels, "10 mm" in 60, 8 pixels, the long tick
// in 18, the paper in 8; 16 pixels, "full cut" in 96, 8 pixels. The cut is 3 pixels thick, and 12
// longer than the paper on both sides; its label begins 4 pixels below its top.
TEST(Marks, AreLaidOutRoundThePaper) {
  const auto paper = paperOf(bitImage(1, hex("80")) + feed(200) + hex("1D5600"));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
  Rows expected(136, std::vector<std::uint8_t>(222, kMargin));
  for (std::size_t y = 0; y < 100; ++y) fillRow(expected, y, 94, 102, kPaper);
  expected[0][94] = kDot;
  const std::size_t ticks[] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96};
  for (std::size_t mm = 0; mm <= 12; ++mm) {
    const std::size_t length = mm % 10 == 0 ? 18 : mm == 5 ? 12 : 6;
    fillRow(expected, ticks[mm], 94 - length, 94, kScale);
  }
  write(expected, "0 mm", 26, 1, kScale);
  write(expected, "10 mm", 14, 81, kScale);
  write(expected, "full cut", 118, 104, kCutInk);
  for (std::size_t y = 100; y < 103; ++y) fillRow(expected, y, 82, 114, kCutInk);
  EXPECT_EQ(drawn(painted(picture)), drawn(expected));
}

// Each tick is in the row that is nearest to its millimetre.
TEST(Marks, ScaleIsRoundedToPixels) {
  for (const unsigned dpi : {180U, 203U, 300U}) {
    const auto paper = paperOf(feed(255) + feed(255) + feed(255) + feed(255) + feed(255));
    PaperPicture picture(paper, escpos::wholeStrip(paper), {dpi, 1, true});
    const auto rows = painted(picture);
    const auto edge = static_cast<std::size_t>(std::find(rows[1].begin(), rows[1].end(), kPaper) -
                                               rows[1].begin());
    std::vector<long> ticks;
    for (std::size_t y = 0; y < rows.size(); ++y) {
      if (rows[y][edge - 1] == kScale) ticks.push_back(static_cast<long>(y));
    }
    std::vector<long> expected;
    for (int mm = 0; std::lround(mm * dpi / 25.4) <= 638; ++mm) {
      expected.push_back(std::lround(mm * dpi / 25.4));
    }
    EXPECT_EQ(ticks, expected) << dpi;
  }
}

const Bytes kMarkedPaper = bitImage(1, hex("AA 55 81 7E 3C")) + feed(200) + hex("1B70003232") +
                           feed(200) + hex("1B420302 1B420101 1D5601") + feed(200) + hex("1D5600");

// At 381 and 762 pixels an inch all distances are whole pixels, and text is enlarged two and four
// times.
TEST(Marks, AreTheSameAtTwiceTheScale) {
  const auto paper = paperOf(kMarkedPaper);
  PaperPicture picture(paper, escpos::wholeStrip(paper), {381, 1, true});
  PaperPicture twice(paper, escpos::wholeStrip(paper), {381, 2, true});
  const Rows rows = painted(picture);
  const Rows large = painted(twice);
  ASSERT_EQ(large.size(), 2 * rows.size());
  ASSERT_EQ(large[0].size(), 2 * rows[0].size());
  Rows halved(rows.size(), std::vector<std::uint8_t>(rows[0].size()));
  for (std::size_t y = 0; y < rows.size(); ++y) {
    for (std::size_t x = 0; x < rows[0].size(); ++x) halved[y][x] = large[2 * y][2 * x];
  }
  EXPECT_EQ(drawn(halved), drawn(rows));
}

// A piece shows what a paper of its own would show.
TEST(Marks, OfAPieceCountFromItsTop) {
  const auto paper = paperOf(feed(100) + hex("1B70003232 1D5600") + kMarkedPaper);
  const auto parts = escpos::pieces(paper);
  ASSERT_EQ(parts.size(), 3u);
  const auto alone = paperOf(kMarkedPaper);
  const auto partsAlone = escpos::pieces(alone);
  ASSERT_EQ(partsAlone.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    PaperPicture picture(paper, parts[i + 1], {203, 1, true});
    PaperPicture expected(alone, partsAlone[i], {203, 1, true});
    EXPECT_EQ(drawn(painted(picture)), drawn(painted(expected))) << i;
  }
}

// A beginning page is no event on the paper.
TEST(Marks, LeaveOutTheBeginningOfAPage) {
  const auto paper = paperOf(feed(200));
  const auto withPage = paperOf(hex("1B3C") + feed(200));
  PaperPicture expected(paper, escpos::wholeStrip(paper), {203, 1, true});
  PaperPicture picture(withPage, escpos::wholeStrip(withPage), {203, 1, true});
  EXPECT_EQ(drawn(painted(picture)), drawn(painted(expected)));
}

// The columns of the row of a cut that have its ink.
std::vector<std::size_t> columnsOfCut(const char* cut) {
  const auto paper = paperOf(feed(200) + hex(cut) + feed(200));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
  const auto row = painted(picture)[100];
  std::vector<std::size_t> columns;
  for (std::size_t x = 0; x < row.size(); ++x) {
    if (row[x] == kCutInk) columns.push_back(x);
  }
  return columns;
}

TEST(Marks, DrawAFullCutWithoutAGap) {
  const auto columns = columnsOfCut("1D5600");
  ASSERT_FALSE(columns.empty());
  EXPECT_EQ(columns.back() - columns.front() + 1, columns.size());
}

// Dashes and gaps of 18 pixels; the first dash starts at the left edge of the picture.
TEST(Marks, DrawAPartialCutInDashes) {
  const auto full = columnsOfCut("1D5600");
  std::vector<std::size_t> expected;
  for (const std::size_t x : full) {
    if (x % 36 < 18) expected.push_back(x);
  }
  EXPECT_EQ(columnsOfCut("1D5601"), expected);
  EXPECT_LT(expected.size(), full.size());
}

TEST(Marks, LabelADrawerPulseInItsColour) {
  const auto paper = paperOf(hex("1B7000FA32") + feed(255));
  PaperPicture drawer(paper, escpos::wholeStrip(paper), {203, 1, true});
  const auto rows = painted(drawer);
  EXPECT_GT(countOf(rows, kDrawerInk), 0u);
  EXPECT_EQ(countOf(rows, kBeepInk), 0u);
  EXPECT_EQ(countOf(rows, kCutInk), 0u);
}

TEST(Marks, AtOnePositionStackUpToALimit) {
  Bytes beeps;
  for (int i = 0; i < 5; ++i) beeps = beeps + hex("1B420101");
  const auto few = paperOf(feed(2) + beeps);
  for (int i = 0; i < 1000; ++i) beeps = beeps + hex("1B420101");
  const auto many = paperOf(feed(2) + beeps);
  const auto heightOf = [](const escpos::Paper& paper) {
    return PaperPicture(paper, escpos::wholeStrip(paper), {203, 1, true}).height();
  };
  // From row 1, a line of 28 pixels for each, and 8 pixels below; 12 may move down.
  EXPECT_EQ(heightOf(few), 1u + 5 * 28 + 8);
  EXPECT_EQ(heightOf(many), 1u + 13 * 28 + 8);
}

// Whether `text` is drawn in `ink` with blank pixels of the margin around it on all sides.
bool shows(const std::vector<std::vector<std::uint8_t>>& rows, const std::string& text, Ink ink) {
  const std::size_t width = text.size() * kGlyphAdvance;
  const auto isText = [&](std::size_t left, std::size_t top) {
    for (unsigned y = 0; y < kGlyphRows; ++y) {
      for (unsigned x = 0; x < width; ++x) {
        const std::uint8_t wanted = textPixel(text, x, y) ? ink : kMargin;
        if (rows[top + y][left + x] != wanted) return false;
      }
    }
    return true;
  };
  for (std::size_t top = 0; top + kGlyphRows < rows.size(); ++top) {
    for (std::size_t left = 0; left + width < rows[top].size(); ++left) {
      if (isText(left, top)) return true;
    }
  }
  return false;
}

struct LabelCase {
  const char* command;
  const char* text;
  Ink ink;
};

class MarkLabel : public testing::TestWithParam<LabelCase> {};

// The mark is at the end of the paper, where the label needs room below it.
TEST_P(MarkLabel, IsWholeAndInWords) {
  const auto paper = paperOf(feed(200) + hex(GetParam().command));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
  EXPECT_TRUE(shows(painted(picture), GetParam().text, GetParam().ink)) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Marks, MarkLabel,
    testing::Values(LabelCase{"1D5600", "full cut", kCutInk},
                    LabelCase{"1D5601", "partial cut", kCutInk},
                    // Connector 0 is pin 2, 1 is pin 5; units of 2 ms.
                    LabelCase{"1B70003232", "drawer, pin 2, 100 ms", kDrawerInk},
                    LabelCase{"1B7001FA32", "drawer, pin 5, 500 ms", kDrawerInk},
                    LabelCase{"1B420102", "1 beep", kBeepInk},
                    LabelCase{"1B420302", "3 beeps", kBeepInk}));

// The top of `text` in the margin on the left; -1 if it is not there.
std::int64_t topOfNumber(const std::vector<std::vector<std::uint8_t>>& rows,
                         const std::string& text) {
  for (std::size_t top = 0; top + kGlyphRows < rows.size(); ++top) {
    const std::vector<std::vector<std::uint8_t>> part(rows.begin() + top,
                                                      rows.begin() + top + kGlyphRows + 1);
    if (shows(part, text, kScale)) return static_cast<std::int64_t>(top);
  }
  return -1;
}

// Each number stands in the row below its tick; " 0 mm" is also the end of "10 mm", so it is
// looked for with the blank before it.
TEST(Marks, RulerSaysMillimetres) {
  const auto paper = paperOf(feed(200) + feed(200) + feed(200) + feed(40));  // 320 rows
  PaperPicture picture(paper, escpos::wholeStrip(paper), {254, 1, true});
  const auto rows = painted(picture);
  EXPECT_EQ(topOfNumber(rows, " 0 mm"), 1);
  EXPECT_EQ(topOfNumber(rows, "10 mm"), 101);
  EXPECT_EQ(topOfNumber(rows, "20 mm"), 201);
  // The tick of 30 mm is in row 300; the 23 rows below it have no room for the number.
  EXPECT_EQ(topOfNumber(rows, "30 mm"), -1);
}

// At 50 dpi a centimetre is 20 pixels, less than a line of text.
TEST(Marks, RulerHasFewerNumbersWhereTheyWouldTouch) {
  const auto paper = paperOf(feed(200) + feed(200));  // 200 rows are 102 mm
  PaperPicture picture(paper, escpos::wholeStrip(paper), {50, 1, true});
  const auto rows = painted(picture);
  EXPECT_TRUE(shows(rows, "50 mm", kScale));
  EXPECT_FALSE(shows(rows, "10 mm", kScale));
}

// A line of text is 28 pixels: a centimetre at 70 dpi, rounded.
TEST(Marks, RulerHasANumberForEachCentimetreWhereThereIsRoom) {
  const auto paper = paperOf(feed(200) + feed(200));
  for (const unsigned dpi : {69U, 70U}) {
    PaperPicture picture(paper, escpos::wholeStrip(paper), {dpi, 1, true});
    EXPECT_EQ(shows(painted(picture), "10 mm", kScale), dpi == 70) << dpi;
  }
}

// The margin on the right ends 8 pixels after the longest label, or after the paper.
TEST(Marks, LeaveNoEmptyStripOnTheRight) {
  const auto marginOf = [](const Bytes& marks) {
    const auto paper = paperOf(feed(200) + marks);
    PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
    const auto row = painted(picture)[50];
    return static_cast<std::size_t>(std::find(row.rbegin(), row.rend(), kPaper) - row.rbegin());
  };
  EXPECT_EQ(marginOf({}), 8u);
  const std::size_t beep = marginOf(hex("1B420101"));
  const std::size_t cut = marginOf(hex("1B420101 1D5601"));
  // "partial cut" has five letters more than "1 beep".
  EXPECT_EQ(cut - beep, 5u * kGlyphAdvance);
}

TEST(PaperPicture, TurnsItsInksIntoGreyLevels) {
  const auto paper = paperOf(bitImage(1, hex("80 00 00 00 00 00 00 80")) + feed(2));
  PaperPicture picture(paper, escpos::wholeStrip(paper), {});
  const Picture grey = greyPicture(picture);
  EXPECT_EQ(grey.widthPx, 8u);
  EXPECT_EQ(grey.heightPx, 1u);
  EXPECT_EQ(grey.pixels, (std::vector<std::uint8_t>{0, 255, 255, 255, 255, 255, 255, 0}));
}

// 0.299 red + 0.587 green + 0.114 blue: the margin is 227.9, the scale 73.7, a cut 82.3, a drawer
// pulse 82.1, a beep 72.9.
TEST(PaperPicture, TurnsTheColoursOfMarksIntoTheirLuma) {
  const auto levelsOf = [](const char* mark) {
    const auto paper = paperOf(bitImage(1, hex("FF")) + feed(200) + hex(mark));
    PaperPicture picture(paper, escpos::wholeStrip(paper), {203, 1, true});
    const Picture grey = greyPicture(picture);
    const std::set<int> levels(grey.pixels.begin(), grey.pixels.end());
    return levels;
  };
  EXPECT_EQ(levelsOf("1D5600"), (std::set<int>{0, 74, 82, 228, 255}));
  EXPECT_EQ(levelsOf("1B70003232"), (std::set<int>{0, 74, 82, 228, 255}));
  EXPECT_EQ(levelsOf("1B420101"), (std::set<int>{0, 73, 74, 228, 255}));
}

}  // namespace
}  // namespace wren::preview
