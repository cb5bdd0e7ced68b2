// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/direct_dots.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "printer/dot_matrix_ep_printer.h"
#include "tests/printer/page_options.h"
#include "tests/reference/page.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Case {
  int width = 0;
  int height = 0;
  int bytesPerLine = 0;
  reference::PageOptions options;
};

Bytes noisyPage(const Case& c, std::mt19937& random) {
  Bytes page(static_cast<std::size_t>(c.bytesPerLine) * static_cast<std::size_t>(c.height));
  for (auto& pixel : page) pixel = static_cast<std::uint8_t>(random() >> 8);
  return page;
}

std::string describe(const Case& c) {
  return "type " + std::to_string(c.options.halftoneType) + ", " + std::to_string(c.width) + " x " +
         std::to_string(c.height) + ", " + std::to_string(c.bytesPerLine) +
         " bytes per line, brightness " + std::to_string(c.options.brightness) + ", contrast " +
         std::to_string(c.options.contrast) + (c.options.rotate180 ? ", rotated" : "") +
         (c.options.mirror ? ", mirrored" : "") + (c.options.negative ? ", negative" : "");
}

void expectDirectEqualsLiteral(const Case& c, std::mt19937& random) {
  const Bytes page = noisyPage(c, random);
  DotMatrixEpPrinter printer;
  wren_test::applyOptions(c.options, printer);
  Bytes direct(page.size());
  const GreyPage received = {page.data(), static_cast<std::size_t>(c.bytesPerLine),
                             static_cast<unsigned>(c.width), static_cast<unsigned>(c.height)};
  const bool made =
      c.options.halftoneType == QVDithering
          ? makeStencilDotsDirectly(printer, received, direct.data())
          : makeDotsDirectly(printer, c.options.halftoneType, received, direct.data());
  ASSERT_TRUE(made) << describe(c);
  Bytes literal(page.size());
  std::vector<std::string> log;
  reference::PageProcess(c.options, c.options.halftoneType, page.data(), c.bytesPerLine, c.width,
                         c.height, literal, log);
  ASSERT_EQ(direct, literal) << describe(c);
}

// Every orientation with every tone.
void expectTurnsEqualLiteral(int type, int widest, int highest, int longestTail,
                             std::mt19937& random) {
  for (int turn = 0; turn < 8; ++turn) {
    for (const int brightness : {0, -100, -7, 3, 100}) {
      Case c;
      c.width = 1 + static_cast<int>(random() % static_cast<unsigned>(widest));
      c.height = 1 + static_cast<int>(random() % static_cast<unsigned>(highest));
      c.bytesPerLine =
          c.width + static_cast<int>(random() % static_cast<unsigned>(longestTail + 1));
      c.options.halftoneType = type;
      c.options.brightness = brightness;
      c.options.contrast = static_cast<int>(random() % 3) * 40 - 40;
      c.options.rotate180 = (turn & 1) != 0;
      c.options.mirror = (turn & 2) != 0;
      c.options.negative = (turn & 4) != 0;
      expectDirectEqualsLiteral(c, random);
    }
  }
}

TEST(DirectDots, EqualTheLiteralPageForEveryClassicMethodToneAndOrientation) {
  std::mt19937 random(1);
  for (int type = 0; type <= 7; ++type) expectTurnsEqualLiteral(type, 70, 20, 2, random);
}

TEST(DirectDots, EqualTheLiteralPageForTheStencilMethodInEveryToneAndOrientation) {
  std::mt19937 random(2);
  expectTurnsEqualLiteral(QVDithering, 70, 60, 0, random);
}

class DirectDotsRefuse : public testing::Test {
 protected:
  bool isMade(const GreyPage& page) { return makeDotsDirectly(printer, 0, page, out.data()); }
  DotMatrixEpPrinter printer;
  Bytes levels = Bytes(64, 200);
  Bytes out = Bytes(64, 7);
};

TEST_F(DirectDotsRefuse, NothingThatTheBitmapTakes) {
  EXPECT_TRUE(isMade({levels.data(), 8, 8, 8}));
}

TEST_F(DirectDotsRefuse, AMissingPage) {
  EXPECT_FALSE(isMade({nullptr, 8, 8, 8}));
}

TEST_F(DirectDotsRefuse, RowsShorterThanTheyAreWide) {
  EXPECT_FALSE(isMade({levels.data(), 7, 8, 8}));
}

TEST_F(DirectDotsRefuse, AnEmptyPage) {
  EXPECT_FALSE(isMade({levels.data(), 8, 8, 0}));
  EXPECT_FALSE(isMade({levels.data(), 8, 0, 8}));
}

TEST_F(DirectDotsRefuse, AHeightThatTheBitmapCannotHold) {
  EXPECT_FALSE(isMade({levels.data(), 8, 8, 0xFFFFFFFF}));
  EXPECT_EQ(out, Bytes(64, 7)) << "something was written";
}

TEST_F(DirectDotsRefuse, AStencilOfRowsThatAreLongerThanTheyAreWide) {
  EXPECT_TRUE(makeStencilDotsDirectly(printer, {levels.data(), 8, 8, 8}, out.data()));
  EXPECT_FALSE(makeStencilDotsDirectly(printer, {levels.data(), 8, 7, 8}, out.data()));
}

TEST_F(DirectDotsRefuse, TheBufferOfThePageItself) {
  EXPECT_FALSE(makeDotsDirectly(printer, 0, {out.data(), 8, 8, 8}, out.data()));
}

}  // namespace
