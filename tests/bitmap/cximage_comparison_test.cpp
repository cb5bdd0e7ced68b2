// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Holds every operation of the bitmap to the reference implementation: random images of
// every depth and every width to 70.

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <span>
#include <string>

#include "dither/methods.h"
#include "tests/bitmap/bitmap_fixtures.h"
#include "tests/reference/cximage.h"
#include "tests/support/same_bytes.h"

namespace {

using namespace wren_test;

constexpr std::uint32_t kMaxWidth = 70;
constexpr std::uint32_t kMaxHeight = 9;
constexpr std::uint32_t kDepths[] = {1, 4, 8, 24, 32};

// The same image twice.
struct Pair {
  OpenImage image;
  reference::CxImage expected;
};

struct Source {
  std::uint32_t width, height, depth, bytesPerLine;
  Bytes bytes;
};

std::string nameOf(const Source& source) {
  return std::to_string(source.width) + " x " + std::to_string(source.height) + " at " +
         std::to_string(source.depth) + " bits";
}

Source randomSource(std::mt19937& random, std::uint32_t width, std::uint32_t height,
                    std::uint32_t depth) {
  const auto slack = static_cast<std::uint32_t>(random() % 5);
  Source source = {width, height, depth, (width * depth + 7) / 8 + slack, {}};
  source.bytes.resize(source.bytesPerLine * height + 1);
  for (auto& byte : source.bytes) byte = static_cast<std::uint8_t>(random());
  return source;
}

void load(Pair& pair, const Source& source, bool flip) {
  const bool made = pair.image.CreateFromArray(source.bytes.data(), source.width, source.height,
                                               source.depth, source.bytesPerLine, flip);
  ASSERT_EQ(made, pair.expected.CreateFromArray(source.bytes.data(), source.width, source.height,
                                                source.depth, source.bytesPerLine, flip));
}

// Columns `left` to `right` - 1: padding and margins are undefined.
void expectSamePixels(Pair& pair, std::int64_t left, std::int64_t right) {
  for (std::int64_t y = 0; y < pair.image.GetHeight(); ++y) {
    for (std::int64_t x = left; x < right; ++x) {
      ASSERT_EQ(pair.image.GetPixelIndex(x, y), pair.expected.GetPixelIndex(x, y)) << x << ',' << y;
      const tagRGBQUAD color = pair.image.BlindGetPixelColor(x, y);
      const reference::tagRGBQUAD expected = pair.expected.BlindGetPixelColor(x, y);
      ASSERT_EQ(bytesOf(color), bytesOf(expected)) << x << ',' << y;
    }
  }
}

void expectSameFrame(Pair& pair) {
  ASSERT_EQ(pair.image.IsValid(), pair.expected.IsValid());
  ASSERT_EQ(bytesOf(pair.image.header), bytesOf(pair.expected.header));
  ASSERT_EQ(pair.image.info.effectiveWidth, pair.expected.info.effectiveWidth);
  ASSERT_EQ(pair.image.info.imageType, pair.expected.info.imageType);
  ASSERT_EQ(pair.image.GetSize(), pair.expected.GetSize());
  ASSERT_STREQ(pair.image.GetLastError(), pair.expected.GetLastError());
  if (!pair.image.IsValid()) return;
  const std::size_t bytes = 40 + pair.image.GetPaletteSize();
  const auto* block = static_cast<const std::uint8_t*>(pair.image.dib);
  ASSERT_TRUE(sameBytes(std::span{pair.expected.dib, bytes}, std::span{block, bytes}, bytes));
}

void expectSame(Pair& pair) {
  ASSERT_NO_FATAL_FAILURE(expectSameFrame(pair));
  if (pair.image.IsValid()) expectSamePixels(pair, 0, pair.image.GetWidth());
}

using Operation = std::function<void(Pair&)>;

void compareOverSources(unsigned seed, const Operation& operation) {
  std::mt19937 random(seed);
  for (const std::uint32_t depth : kDepths) {
    for (std::uint32_t width = 0; width <= kMaxWidth; ++width) {
      for (std::uint32_t height = 1; height <= kMaxHeight; ++height) {
        const Source source = randomSource(random, width, height, depth);
        SCOPED_TRACE(nameOf(source));
        Pair pair;
        ASSERT_NO_FATAL_FAILURE(load(pair, source, random() % 2 == 0));
        ASSERT_NO_FATAL_FAILURE(operation(pair));
      }
    }
  }
}

TEST(CxImageComparison, CreateFromArray) {
  compareOverSources(1, expectSame);
}

TEST(CxImageComparison, Rotate180) {
  compareOverSources(2, [](Pair& pair) {
    ASSERT_EQ(pair.image.Rotate180(), pair.expected.Rotate180(nullptr));
    expectSame(pair);
  });
}

TEST(CxImageComparison, MirrorOfEightBits) {
  compareOverSources(3, [](Pair& pair) {
    if (pair.image.header.bitsPerPixel != 8) return;
    pair.image.Mirror();
    pair.expected.Mirror();
    expectSame(pair);
  });
}

TEST(CxImageComparison, MakeCenter) {
  compareOverSources(4, [](Pair& pair) {
    const int width = pair.image.GetWidth();
    for (const int newWidth : {width - 1, width, width + 1, width + 2, 2 * width + 9}) {
      const int offset = newWidth > pair.image.GetWidth() && pair.image.IsValid()
                             ? (newWidth - pair.image.GetWidth()) / 2
                             : 0;
      const int columns = pair.image.GetWidth();
      pair.image.MakeCenter(newWidth);
      pair.expected.MakeCenter(newWidth);
      ASSERT_NO_FATAL_FAILURE(expectSameFrame(pair));
      if (!pair.image.IsValid()) return;
      ASSERT_NO_FATAL_FAILURE(expectSamePixels(pair, offset, offset + columns));
      if (pair.image.GetWidth() == columns) continue;
      // The margins are undefined and part of the next picture: give them a value.
      for (std::int64_t y = 0; y < pair.image.GetHeight(); ++y) {
        for (std::int64_t x = 0; x < newWidth; ++x) {
          if (x >= offset && x < offset + columns) continue;
          pair.image.SetPixelIndex(x, y, 1);
          pair.expected.SetPixelIndex(x, y, 1);
        }
      }
    }
  });
}

TEST(CxImageComparison, Negative) {
  compareOverSources(5, [](Pair& pair) {
    pair.image.Negative();
    pair.expected.Negative();
    expectSame(pair);
  });
}

TEST(CxImageComparison, Light) {
  std::mt19937 random(12);
  compareOverSources(6, [&](Pair& pair) {
    const auto brightness = static_cast<int>(random() % 500) - 250;
    const auto contrast = static_cast<int>(random() % 400) - 200;
    ASSERT_EQ(pair.image.Light(brightness, contrast), pair.expected.Light(brightness, contrast));
    expectSame(pair);
  });
}

TEST(CxImageComparison, Lut) {
  std::mt19937 random(6);
  Bytes table(256);
  for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
  compareOverSources(7, [&](Pair& pair) {
    ASSERT_EQ(pair.image.Lut(table.data()), pair.expected.Lut(table.data()));
    expectSame(pair);
  });
}

TEST(CxImageComparison, IncreaseBpp) {
  compareOverSources(8, [](Pair& pair) {
    for (const std::uint32_t depth : {4U, 8U, 16U, 24U}) {
      ASSERT_EQ(pair.image.IncreaseBpp(depth), pair.expected.IncreaseBpp(depth)) << depth;
      ASSERT_NO_FATAL_FAILURE(expectSame(pair));
    }
  });
}

TEST(CxImageComparison, NearestIndexOfRandomPalettes) {
  std::mt19937 random(9);
  Pair pair;
  pair.image.Create(1, 1, 4, 0);
  pair.expected.Create(1, 1, 4, 0);
  for (int round = 0; round < 20000; ++round) {
    if (round % 50 == 0) {
      for (std::uint32_t byte = 0; byte < 64; ++byte) {
        const auto value = static_cast<std::uint8_t>(random() % 4 * 85);
        reinterpret_cast<std::uint8_t*>(pair.image.GetPalette())[byte] = value;
        reinterpret_cast<std::uint8_t*>(pair.expected.GetPalette())[byte] = value;
      }
    }
    const auto blue = static_cast<std::uint8_t>(random());
    const auto green = static_cast<std::uint8_t>(random());
    const auto red = static_cast<std::uint8_t>(random());
    ASSERT_EQ(pair.image.GetNearestIndex({blue, green, red, 0}),
              pair.expected.GetNearestIndex({blue, green, red, 0}));
  }
}

class CxImageDitherComparison : public testing::TestWithParam<int> {};

TEST_P(CxImageDitherComparison, NoiseAtEveryDepth) {
  compareOverSources(10, [](Pair& pair) {
    ASSERT_EQ(pair.image.Dither(GetParam()), pair.expected.Dither(GetParam()));
    expectSame(pair);
  });
}

INSTANTIATE_TEST_SUITE_P(Methods, CxImageDitherComparison,
                         testing::Range(0, static_cast<int>(wren::dither::kMethods.size())));

}  // namespace
