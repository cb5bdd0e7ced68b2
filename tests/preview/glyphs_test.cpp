// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/glyphs.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace wren::preview {
namespace {

TEST(Glyphs, DrawTheirLettersSideBySide) {
  const auto drawn = [](std::string_view text) {
    std::string rows;
    for (unsigned y = 0; y < kGlyphRows; ++y) {
      for (unsigned x = 0; x < 11; ++x) rows += textPixel(text, x, y) ? '#' : '.';
      rows += '\n';
    }
    return rows;
  };
  EXPECT_EQ(drawn("1l"),
            "..#....##..\n.##.....#..\n..#.....#..\n..#.....#..\n"
            "..#.....#..\n..#.....#..\n.###...###.\n");
  EXPECT_EQ(drawn("?"), drawn(""));
  EXPECT_FALSE(textPixel("1", 0, 99));
}

}  // namespace
}  // namespace wren::preview
