// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The product's printer object against the literal page, byte for byte: printer
// commands on two streams, log lines and both debug images. Much of this no job
// option reaches: contrast, negative, mirrored and turned pages.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "printer/blank_lines.h"
#include "printer/dot_matrix_ep_printer.h"
#include "tests/printer/printed_page.h"
#include "tests/reference/page.h"

namespace {

using reference::Bytes;
using reference::PageOptions;
using wren_test::PageOutcome;
using wren_test::printWithProduct;
using wren_test::TestPage;

constexpr int kStencil = 8;

// Seeded choices; the engine's numbers are the same on every system.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine(seed) {}
  unsigned below(unsigned n) { return static_cast<unsigned>(engine() % n); }
  bool coin() { return below(2) == 1; }
  int oneOf(const std::vector<int>& values) {
    return values[below(static_cast<unsigned>(values.size()))];
  }

 private:
  std::mt19937 engine;
};

uint8_t levelOfKind(unsigned kind, Dice& dice, unsigned x) {
  switch (kind) {
    case 0:
      return static_cast<uint8_t>(dice.below(256));  // noise
    case 1:
      return dice.below(12) == 0 ? 255 : 0;  // a few dots
    case 2:
      return static_cast<uint8_t>(120 + dice.below(16));  // close to the middle
    case 3:
      return static_cast<uint8_t>(x * 9);  // a ramp
    default:
      return dice.coin() ? 255 : 0;
  }
}

// A page with up to three blank rows at its top and bottom.
TestPage somePage(Dice& dice, unsigned extraBytes) {
  TestPage page;
  page.width = 1 + dice.below(40);
  page.height = 1 + dice.below(24);
  page.bytesPerLine = page.width + extraBytes;
  page.pixels = Bytes(page.bytesPerLine * page.height, 0);
  const unsigned kind = dice.below(6);
  const unsigned top = dice.below(4);
  const unsigned bottom = dice.below(4);
  for (unsigned y = top; y + bottom < page.height; ++y) {
    for (unsigned x = 0; x < page.bytesPerLine; ++x)
      page.pixels[y * page.bytesPerLine + x] = levelOfKind(kind, dice, x);
  }
  return page;
}

PageOptions someOptions(Dice& dice, const TestPage& page, int halftoneType) {
  PageOptions options;
  options.halftoneType = halftoneType;
  options.brightness = dice.oneOf({0, 0, 0, 1, -1, 20, -20, 50, -50, 100, -100});
  options.contrast = dice.oneOf({0, 0, 0, 1, -1, 50, -50, 100, -100});
  options.negative = dice.coin();
  options.mirror = dice.coin();
  options.rotate180 = dice.coin();
  options.removeBlankEdges = static_cast<uint8_t>(dice.oneOf({0, 15, 15, 2, 8, 10, 5}));
  if (dice.coin()) options.skipRightPixels = dice.below(static_cast<unsigned>(page.width));
  options.hwResolutionX = static_cast<uint32_t>(dice.oneOf({100, 101, 203}));
  return options;
}

std::string describe(const PageOptions& options, const TestPage& page) {
  return "type " + std::to_string(options.halftoneType) + ", brightness " +
         std::to_string(options.brightness) + ", contrast " + std::to_string(options.contrast) +
         (options.negative ? ", negative" : "") + (options.mirror ? ", mirror" : "") +
         (options.rotate180 ? ", rotated" : "") + ", trim " +
         std::to_string(options.removeBlankEdges) + ", skip " +
         std::to_string(options.skipRightPixels) + ", page " + std::to_string(page.width) + " (" +
         std::to_string(page.bytesPerLine) + ") x " + std::to_string(page.height);
}

void expectSame(const PageOptions& options, const TestPage& page) {
  SCOPED_TRACE(describe(options, page));
  const reference::PageResult expected = reference::printImage(
      options, page.pixels.data(), page.bytesPerLine, page.height, page.width);
  const PageOutcome printed = printWithProduct(options, page);
  EXPECT_EQ(printed.bytes, reference::bytesOf(expected.commands));
  EXPECT_EQ(printed.secondStream, printed.bytes);
  EXPECT_EQ(printed.log, expected.log);
  ASSERT_EQ(printed.dumps.size(), expected.dumps.size());
  for (size_t i = 0; i < printed.dumps.size(); ++i) {
    EXPECT_EQ(printed.dumps[i].kind, expected.dumps[i].kind);
    EXPECT_EQ(printed.dumps[i].bytes, expected.dumps[i].bytes) << expected.dumps[i].kind;
  }
}

// Pages and options drawn from `count` seeds; stops at the first seed that differs.
void compareSeeds(unsigned firstSeed, unsigned count, const std::vector<int>& types,
                  bool longerLines = false) {
  for (unsigned seed = firstSeed; seed < firstSeed + count && !testing::Test::HasFailure();
       ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    const TestPage page = somePage(dice, longerLines ? 1 + dice.below(9) : 0);
    expectSame(someOptions(dice, page, dice.oneOf(types)), page);
  }
}

TEST(ReferenceComparison, RandomPagesOfTheClassicMethods) {
  compareSeeds(1, 3000, {0, 1, 2, 3, 4, 5, 6, 7});
}

TEST(ReferenceComparison, RandomPagesOfTheStencilMethod) {
  compareSeeds(10001, 1500, {kStencil});
}

// Numbers that no name has are Floyd-Steinberg.
TEST(ReferenceComparison, RandomPagesOfUnknownTypes) {
  compareSeeds(20001, 300, {9, 100, -1});
}

TEST(ReferenceComparison, LinesLongerThanTheWidth) {
  compareSeeds(30001, 600, {0, 1, 3, 7, kStencil}, true);
}

// Every branch with every orientation and tone that matters, on one page.
class OptionGrid : public testing::TestWithParam<int> {};

TEST_P(OptionGrid, EveryToneAndOrientation) {
  Dice dice(77);
  TestPage page;
  page.width = page.bytesPerLine = 13;
  page.height = 10;
  for (unsigned i = 0; i < 130; ++i) page.pixels.push_back(static_cast<uint8_t>(dice.below(256)));
  PageOptions options;
  options.halftoneType = GetParam();
  for (const int contrast : {0, 1, -1, 50, -50, 100, -100}) {
    for (const int brightness : {0, 20, -20}) {
      for (int turn = 0; turn < 8; ++turn) {
        options.contrast = contrast;
        options.brightness = brightness;
        options.negative = (turn & 1) != 0;
        options.mirror = (turn & 2) != 0;
        options.rotate180 = (turn & 4) != 0;
        expectSame(options, page);
        if (HasFailure()) return;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Types, OptionGrid, testing::Range(0, 9));

// By hand -------------------------------------------------------------------------

// The column bytes of the only band of a page of one row of dots or two.
Bytes columnsOf(const PageOptions& options, unsigned long width, const Bytes& pixels) {
  TestPage page;
  page.width = page.bytesPerLine = width;
  page.height = pixels.size() / width;
  page.pixels = pixels;
  const Bytes bytes = printWithProduct(options, page).bytes;
  EXPECT_EQ(bytes.size(), 2 + 5 + width + 3);
  return Bytes(bytes.begin() + 7, bytes.end() - 3);
}

TEST(Orientation, MirrorTurnsLeftAndRightAround) {
  PageOptions options;
  options.mirror = true;
  EXPECT_EQ(columnsOf(options, 3, {255, 0, 0, 255, 255, 0}), (Bytes{0x00, 0x40, 0xC0}));
}

TEST(Orientation, RotationTurnsThePageUpsideDown) {
  PageOptions options;
  options.rotate180 = true;
  EXPECT_EQ(columnsOf(options, 3, {255, 0, 0, 255, 255, 0}), (Bytes{0x00, 0x80, 0xC0}));
}

TEST(Orientation, BothTogetherSwapTheRows) {
  PageOptions options;
  options.mirror = true;
  options.rotate180 = true;
  EXPECT_EQ(columnsOf(options, 3, {255, 0, 0, 255, 255, 0}), (Bytes{0xC0, 0x80, 0x00}));
}

TEST(Orientation, NegativePrintsTheBarePaper) {
  PageOptions options;
  options.negative = true;
  EXPECT_EQ(columnsOf(options, 3, {255, 0, 128}), (Bytes{0x00, 0x80, 0x80}));
  options.halftoneType = kStencil;
  EXPECT_EQ(columnsOf(options, 3, {255, 255, 255}), (Bytes{0x00, 0x00, 0x00}));
  EXPECT_EQ(columnsOf(options, 3, {0, 0, 0}), (Bytes{0x80, 0x80, 0x80}));
}

// Contrast 50 doubles the distance from 128: 129 is 130 and prints, 128 stays. -50 makes all 128.
TEST(Tone, ContrastStretchesAboutTheMiddle) {
  PageOptions options;
  options.contrast = 50;
  EXPECT_EQ(columnsOf(options, 3, {128, 129, 127}), (Bytes{0x00, 0x80, 0x00}));
  options.contrast = -50;
  EXPECT_EQ(columnsOf(options, 3, {255, 129, 0}), (Bytes{0x00, 0x00, 0x00}));
  // Contrast -100 turns levels around: 255 becomes 128 - 127 = 1 and 0 becomes 255.
  options.contrast = -100;
  EXPECT_EQ(columnsOf(options, 3, {255, 128, 0}), (Bytes{0x00, 0x00, 0x80}));
  // With brightness 1 the middle moves up by 5: contrast -50 makes all of it 133.
  options.contrast = -50;
  options.brightness = 1;
  EXPECT_EQ(columnsOf(options, 3, {255, 128, 0}), (Bytes{0x80, 0x80, 0x80}));
}

// Ink in row 3 of ten: rows 2 and 3 are kept. Turned, the ink is in row 6, so both are blank.
TEST(Trims, RotationDoesNotMoveThem) {
  PageOptions options;
  options.removeBlankEdges = 15;
  TestPage page;
  page.width = page.bytesPerLine = 1;
  page.height = 10;
  page.pixels = {0, 0, 0, 255, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(printWithProduct(options, page).bytes,
            (Bytes{0x1B, 0x3C, 0x1B, 0x2A, 1, 1, 0, 0x40, 0x1B, 0x4A, 4}));
  options.rotate180 = true;
  EXPECT_EQ(printWithProduct(options, page).bytes,
            (Bytes{0x1B, 0x3C, 0x1B, 0x2A, 1, 1, 0, 0x00, 0x1B, 0x4A, 4}));
}

// Parts that can be called alone ------------------------------------------------------

TEST(ReferenceComparison, BlankLineCounters) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    TestPage page = somePage(dice, dice.below(3));
    for (uint8_t& level : page.pixels) {
      if (dice.below(8) != 0) level = 0;
    }
    const unsigned long skip = dice.below(static_cast<unsigned>(page.bytesPerLine) + 3);
    EXPECT_EQ(wrenImageCountBlankLinesFromBack(page.pixels.data(), page.bytesPerLine, page.height,
                                               skip, page.width),
              reference::wrenImageCountBlankLinesFromBack(page.pixels.data(), page.bytesPerLine,
                                                          page.height, skip, page.width));
    EXPECT_EQ(wrenImageCountBlankLinesFromFront(page.pixels.data(), page.bytesPerLine, page.height,
                                                skip, page.width),
              reference::wrenImageCountBlankLinesFromFront(page.pixels.data(), page.bytesPerLine,
                                                           page.height, skip, page.width));
  }
}

TEST(ReferenceComparison, PackedPages) {
  DotMatrixEpPrinter printer;
  for (unsigned seed = 1; seed <= 500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    const TestPage page = somePage(dice, 0);
    const auto bytesPerLine = static_cast<int>(page.bytesPerLine);
    const auto height = static_cast<int>(page.height);
    const unsigned skip = dice.below(static_cast<unsigned>(page.bytesPerLine) + 3);
    printer.setSkipRightPixels(skip);
    Bytes packed = page.pixels;
    Bytes expected = page.pixels;
    std::vector<std::string> expectedLog;
    testing::internal::CaptureStderr();
    const int length = printer.GrayToMono(bytesPerLine, height, packed.data());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(length,
              reference::GrayToMono(bytesPerLine, height, expected.data(), skip, expectedLog));
    EXPECT_EQ(packed, expected);
    EXPECT_EQ(log, expectedLog.at(0) + "\n");
  }
}

}  // namespace
