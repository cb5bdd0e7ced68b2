// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The dots of a page against the reference implementation, for every method, tone, orientation
// and row padding. Much of this no job option reaches: contrast, negative, mirrored and rotated
// pages.

#include "printer/page_dots.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "bitmap/cximage.h"
#include "tests/printer/page_options.h"
#include "tests/printer/test_pages.h"
#include "tests/reference/page.h"
#include "tests/support/same_bytes.h"

namespace {

using reference::Bytes;
using reference::PageOptions;
using wren::printer::DotOptions;
using wren::printer::GreyPage;
using wren::printer::hasPrintableSize;
using wren::printer::makePageDots;
using wren_test::Dice;
using wren_test::dotOptions;
using wren_test::kStencil;
using wren_test::sameBytes;
using wren_test::TestPage;

GreyPage greyPage(const TestPage& page) {
  return {page.pixels.data(), page.bytesPerLine, static_cast<std::uint32_t>(page.width),
          static_cast<std::uint32_t>(page.height)};
}

Bytes referenceDots(const PageOptions& options, const TestPage& page) {
  Bytes dots(page.pixels.size());
  std::vector<std::string> log;
  reference::PageProcess(options, options.halftoneType, page.pixels.data(),
                         static_cast<int>(page.bytesPerLine), static_cast<int>(page.width),
                         static_cast<int>(page.height), dots, log);
  return dots;
}

testing::AssertionResult areThoseOfTheReference(const PageOptions& options, const TestPage& page) {
  Bytes dots(page.pixels.size());
  if (!makePageDots(dotOptions(options), greyPage(page), dots.data(), {})) {
    return testing::AssertionFailure() << "refused: " << describe(options, page);
  }
  return sameBytes(referenceDots(options, page), dots, page.bytesPerLine)
         << "\n"
         << describe(options, page);
}

// Pages and options drawn from `count` seeds; stops at the first seed that differs.
void compareSeeds(unsigned firstSeed, unsigned count, const std::vector<int>& types,
                  unsigned mostPadding = 0) {
  for (unsigned seed = firstSeed; seed < firstSeed + count; ++seed) {
    Dice dice(seed);
    const TestPage page = randomPage(dice, mostPadding == 0 ? 0 : 1 + dice.below(mostPadding), 70);
    ASSERT_TRUE(areThoseOfTheReference(randomOptions(dice, page, dice.oneOf(types)), page))
        << "seed " << seed;
  }
}

TEST(PageDots, OfTheClassicMethodsAreThoseOfTheReference) {
  compareSeeds(1, 4000, {0, 1, 2, 3, 4, 5, 6, 7});
}

TEST(PageDots, OfTheStencilMethodAreThoseOfTheReference) {
  compareSeeds(10001, 2000, {kStencil});
}

TEST(PageDots, OfUnknownMethodNumbersAreThoseOfFloydSteinberg) {
  compareSeeds(20001, 300, {9, 100, -1});
}

TEST(PageDots, OfPaddedRowsAreThoseOfTheReference) {
  compareSeeds(30001, 1500, {0, 1, 3, 7, kStencil}, 50);
}

// Every method with every tone and orientation, on one page.
class PageDotsGrid : public testing::TestWithParam<int> {};

TEST_P(PageDotsGrid, EveryToneAndOrientation) {
  const TestPage page = wren_test::noiseLevels(33, 10, 77);
  PageOptions options;
  options.halftoneType = GetParam();
  for (const int contrast : {0, 1, -1, 50, -50, 100, -100}) {
    for (const int brightness : {0, 20, -20, 100, -100}) {
      for (int turn = 0; turn < 8; ++turn) {
        options.contrast = contrast;
        options.brightness = brightness;
        options.negative = (turn & 1) != 0;
        options.mirror = (turn & 2) != 0;
        options.rotate180 = (turn & 4) != 0;
        ASSERT_TRUE(areThoseOfTheReference(options, page));
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Types, PageDotsGrid, testing::Range(0, 9));

// --- Derived by hand ---

Bytes dotsOf(const PageOptions& options, unsigned long width, const Bytes& levels) {
  const TestPage page = {width, levels.size() / width, width, levels};
  Bytes dots(levels.size());
  EXPECT_TRUE(makePageDots(dotOptions(options), greyPage(page), dots.data(), {}));
  return dots;
}

TEST(PageDots, TurnsTheDotsAsTheOptionsSay) {
  const Bytes levels = {255, 0,   0,  //
                        255, 255, 0};
  const struct {
    bool mirror;
    bool rotate180;
    Bytes expected;
  } rows[] = {
      {false, false, {255, 0, 0, 255, 255, 0}},
      {true, false, {0, 0, 255, 0, 255, 255}},
      {false, true, {0, 255, 255, 0, 0, 255}},
      {true, true, {255, 255, 0, 255, 0, 0}},
  };
  for (const auto& row : rows) {
    PageOptions options;
    options.mirror = row.mirror;
    options.rotate180 = row.rotate180;
    EXPECT_EQ(dotsOf(options, 3, levels), row.expected) << row.mirror << row.rotate180;
  }
}

TEST(PageDots, NegativeInvertsTheDots) {
  PageOptions options;
  EXPECT_EQ(dotsOf(options, 3, {255, 129, 128}), (Bytes{255, 255, 0}));
  options.negative = true;
  EXPECT_EQ(dotsOf(options, 3, {255, 129, 128}), (Bytes{0, 0, 255}));
  options.halftoneType = kStencil;
  EXPECT_EQ(dotsOf(options, 3, {255, 255, 255}), (Bytes{0, 0, 0}));
  EXPECT_EQ(dotsOf(options, 3, {0, 0, 0}), (Bytes{255, 255, 255}));
}

// The threshold lets 128 stay paper. Contrast 50 doubles the distance from 128, -50 makes it 0,
// -100 inverts it; brightness 1 adds 5, brightness 20 adds 100.
TEST(PageDots, ToneMovesTheLevelsBeforeTheThreshold) {
  const struct {
    int brightness;
    int contrast;
    Bytes levels;
    Bytes expected;
  } rows[] = {
      {0, 50, {128, 129, 127}, {0, 255, 0}}, {0, -50, {255, 129, 0}, {0, 0, 0}},
      {0, -100, {255, 128, 0}, {0, 0, 255}}, {1, -50, {255, 128, 0}, {255, 255, 255}},
      {20, 0, {28, 29, 0}, {0, 255, 0}},     {-20, 0, {228, 229, 0}, {0, 255, 0}},
  };
  for (const auto& row : rows) {
    PageOptions options;
    options.brightness = row.brightness;
    options.contrast = row.contrast;
    EXPECT_EQ(dotsOf(options, 3, row.levels), row.expected)
        << row.brightness << " " << row.contrast;
  }
}

TEST(PageDots, BytesBeyondTheWidthKeepTheirValues) {
  for (const int type : {0, 4, kStencil}) {
    for (const bool negative : {false, true}) {
      const TestPage page = wren_test::noiseLevels(5, 9, 3, 4);
      PageOptions options;
      options.halftoneType = type;
      options.negative = negative;
      Bytes expected = referenceDots(options, page);
      Bytes dots(page.pixels.size());
      for (std::size_t i = 0; i < dots.size(); ++i) {
        dots[i] = static_cast<std::uint8_t>(0x50 + i);
        if (i % 9 >= 5) expected[i] = dots[i];
      }
      EXPECT_TRUE(makePageDots(dotOptions(options), greyPage(page), dots.data(), {}));
      EXPECT_TRUE(sameBytes(expected, dots, 9)) << type << negative;
    }
  }
}

// --- Overlapping buffers ---

TEST(PageDots, OfOverlappingBuffersAreThoseOfSeparateOnes) {
  for (int type = 0; type <= kStencil; ++type) {
    for (const int shift : {0, 1, 7, 50, 299, -1, -7, -50, -299}) {
      for (const unsigned long padding : {0UL, 3UL}) {
        const TestPage page = wren_test::noiseLevels(20, 13, 5, padding);
        PageOptions options;
        options.halftoneType = type;
        options.rotate180 = shift % 2 != 0;
        options.mirror = shift == 7;
        const Bytes expected = referenceDots(options, page);
        Bytes both(page.pixels.size() + 300, 0);
        std::uint8_t* in = both.data() + (shift < 0 ? -shift : 0);
        std::uint8_t* out = in + shift;
        std::copy(page.pixels.begin(), page.pixels.end(), in);
        Bytes kept(out, out + page.pixels.size());
        GreyPage grey = greyPage(page);
        grey.levels = in;
        ASSERT_TRUE(makePageDots(dotOptions(options), grey, out, {}));
        for (std::size_t i = 0; i < kept.size(); ++i) {
          if (i % page.bytesPerLine < page.width) kept[i] = expected[i];
        }
        ASSERT_TRUE(sameBytes(kept, Bytes(out, out + kept.size()), page.bytesPerLine))
            << "type " << type << ", shift " << shift << ", padding " << padding;
      }
    }
  }
}

TEST(PageDots, DefaultOptionsAreThoseOfTheReference) {
  const TestPage page = {8, 8, 8, Bytes(64, 100)};
  Bytes dots(page.pixels.size());
  EXPECT_TRUE(makePageDots({}, greyPage(page), dots.data(), {}));
  EXPECT_TRUE(sameBytes(referenceDots({}, page), dots, page.bytesPerLine));
}

// --- Pages that are refused ---

TEST(PageDots, ReportAPageWithoutLevelsAndDrawNone) {
  for (const bool negative : {false, true}) {
    Bytes out(6, 0x55);
    DotOptions options;
    options.negative = negative;
    EXPECT_FALSE(makePageDots(options, {nullptr, 3, 2, 2}, out.data(), {}));
    const std::uint8_t paper = negative ? 0xFF : 0;
    EXPECT_EQ(out, (Bytes{paper, paper, 0x55, paper, paper, 0x55}));
  }
}

TEST(PageDots, WriteNothingForAPageWithoutPixels) {
  const Bytes levels(9, 200);
  for (const bool stencil : {false, true}) {
    DotOptions options;
    options.stencil = stencil;
    Bytes out(9, 0x55);
    EXPECT_FALSE(makePageDots(options, {levels.data(), 3, 0, 3}, out.data(), {}));
    EXPECT_FALSE(makePageDots(options, {levels.data(), 3, 3, 0}, out.data(), {}));
    EXPECT_EQ(out, Bytes(9, 0x55));
  }
}

TEST(PageDots, WriteNothingForRowsThatAreShorterThanTheirWidth) {
  const Bytes levels(9, 200);
  Bytes out(9, 0x55);
  EXPECT_TRUE(makePageDots({}, {levels.data(), 2, 3, 3}, out.data(), {}));
  EXPECT_EQ(out, Bytes(9, 0x55));
}

// The page is refused exactly where the palette bitmap refuses one of 8 bits per pixel. Its
// memory is reserved and not written.
TEST(PrintableSize, IsThatOfTheBitmap) {
  const struct {
    std::uint32_t width;
    std::uint32_t height;
  } rows[] = {{0, 1},
              {1, 0},
              {1, 1},
              {536870911, 1},
              {536870912, 1},
              {1, 536870911},
              {1, 536870912},
              {23170, 23170},
              {23171, 23171},
              {65536, 65536},
              {0xFFFFFFFF, 0xFFFFFFFF}};
  for (const auto& row : rows) {
    CxImage image;
    const bool isMade = image.Create(row.width, row.height, 8, 0) != nullptr;
    const std::string error = image.GetLastError();
    if (error == "CxImage::Create can't allocate memory") continue;
    EXPECT_EQ(hasPrintableSize(row.width, row.height), isMade)
        << row.width << " x " << row.height << " " << error;
  }
}

// --- Cancelled ---

TEST(PageDots, StencilStopsOnceTheJobIsCancelled) {
  const TestPage page = wren_test::noiseLevels(20, 600, 1);
  int asked = 0;
  const auto stopAtSecond = [](const void* count) {
    return ++*static_cast<int*>(const_cast<void*>(count)) > 1;
  };
  DotOptions options;
  options.stencil = true;
  Bytes out(page.pixels.size(), 0x55);
  EXPECT_TRUE(makePageDots(options, greyPage(page), out.data(), {stopAtSecond, &asked}));
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(out.back(), 0x55);
}

}  // namespace
