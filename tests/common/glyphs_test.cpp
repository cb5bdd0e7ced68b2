// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/glyphs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

namespace wren {
namespace {

// Rows of '#' and '.'.
std::string drawn(std::string_view text) {
  std::string rows;
  for (unsigned y = 0; y < kGlyphRows; ++y) {
    for (unsigned x = 0; x < text.size() * kGlyphAdvance; ++x) {
      rows += textPixel(text, x, y) ? '#' : '.';
    }
    rows += '\n';
  }
  return rows;
}

// The lowest row with ink, or -1.
int lowestInk(char letter) {
  const std::size_t last = drawn(std::string(1, letter)).rfind('#');
  return last == std::string::npos ? -1 : static_cast<int>(last / (kGlyphColumns + 1));
}

TEST(Glyphs, DrawTheirLettersSideBySide) {
  std::string expected;
  const std::string one = drawn("1");
  const std::string el = drawn("l");
  for (std::size_t row = 0; row < kGlyphRows; ++row) {
    expected += one.substr(row * 13, 12) + el.substr(row * 13, 13);
  }
  EXPECT_EQ(drawn("1l"), expected);
}

// As the font's own file for X11 draws it.
TEST(Glyphs, DrawTheLetterPAsTheFontHasIt) {
  EXPECT_EQ(drawn("p"),
            "............\n"
            "............\n"
            "............\n"
            "............\n"
            "............\n"
            "............\n"
            "............\n"
            "............\n"
            ".########...\n"
            ".##.....##..\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##......##.\n"
            ".##.....##..\n"
            ".########...\n"
            ".##.........\n"
            ".##.........\n"
            ".##.........\n"
            ".##.........\n"
            ".##.........\n");
}

TEST(Glyphs, ExistForEveryPrintableCharacterAndDiffer) {
  std::set<std::string> seen;
  for (char letter = '!'; letter <= '~'; ++letter) {
    EXPECT_GE(lowestInk(letter), 0) << letter;
    EXPECT_TRUE(seen.insert(drawn(std::string(1, letter))).second) << letter;
  }
}

TEST(Glyphs, HaveDescenders) {
  const int baseline = lowestInk('x');
  for (const char letter : std::string_view("gjpqy"))
    EXPECT_GT(lowestInk(letter), baseline) << letter;
  for (const char letter : std::string_view("abcdefhiklmnorstuvwz0123456789")) {
    EXPECT_EQ(lowestInk(letter), baseline) << letter;
  }
}

TEST(Glyphs, AreBlankOutsideAsciiAndOutsideTheText) {
  EXPECT_EQ(drawn("\xC3\xA9\t"), drawn("   "));
  EXPECT_FALSE(textPixel("1", kGlyphAdvance + 4, 10));
  EXPECT_FALSE(textPixel("1", 5, kGlyphRows));
}

// FNV-1a of all rows, two bytes each, low byte first: of spleen-12x24.psfu.gz in Debian's
// fonts-spleen 1.9.1, whose rows are 16 bits wide with the glyph on the left.
TEST(Glyphs, AreThoseOfTheFont) {
  std::uint32_t hash = 0x811C9DC5;
  for (const auto& glyph : kGlyphs) {
    for (const std::uint16_t row : glyph) {
      hash = (hash ^ (row & 0xFFU)) * 0x01000193U;
      hash = (hash ^ (std::uint32_t{row} >> 8U)) * 0x01000193U;
    }
  }
  EXPECT_EQ(hash, 0xA8ADAAFE);
}

}  // namespace
}  // namespace wren
