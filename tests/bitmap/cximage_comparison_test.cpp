// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Holds every operation of the bitmap to the literal version, over random images
// of every depth and of widths around all the sizes that row code is cut into.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>

#include "tests/bitmap/bitmap_fixtures.h"
#include "tests/reference/cximage.h"

namespace {

constexpr std::uint32_t kMaxWidth = 70;
constexpr std::uint32_t kMaxHeight = 9;
constexpr std::uint32_t kDepths[] = {1, 4, 8, 24, 32};

// The same image twice.
struct Pair {
  OpenImage image;
  reference::CxImage literal;
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
  ASSERT_EQ(made, pair.literal.CreateFromArray(source.bytes.data(), source.width, source.height,
                                               source.depth, source.bytesPerLine, flip));
}

// Columns from `left` up to `right`; padding and margins are undefined.
void expectSamePixels(Pair& pair, std::int64_t left, std::int64_t right) {
  for (std::int64_t y = 0; y < pair.image.GetHeight(); ++y) {
    for (std::int64_t x = left; x < right; ++x) {
      ASSERT_EQ(pair.image.GetPixelIndex(x, y), pair.literal.GetPixelIndex(x, y)) << x << ',' << y;
      const tagRGBQUAD color = pair.image.BlindGetPixelColor(x, y);
      const reference::tagRGBQUAD expected = pair.literal.BlindGetPixelColor(x, y);
      ASSERT_EQ(std::memcmp(&color, &expected, sizeof color), 0) << x << ',' << y;
    }
  }
}

void expectSameFrame(Pair& pair) {
  ASSERT_EQ(pair.image.IsValid(), pair.literal.IsValid());
  ASSERT_EQ(std::memcmp(&pair.image.header, &pair.literal.header, 40), 0);
  ASSERT_EQ(pair.image.info.effectiveWidth, pair.literal.info.effectiveWidth);
  ASSERT_EQ(pair.image.info.imageType, pair.literal.info.imageType);
  ASSERT_EQ(pair.image.GetSize(), pair.literal.GetSize());
  ASSERT_STREQ(pair.image.GetLastError(), pair.literal.GetLastError());
  if (!pair.image.IsValid()) return;
  ASSERT_EQ(std::memcmp(pair.image.dib, pair.literal.dib, 40 + pair.image.GetPaletteSize()), 0);
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
    ASSERT_EQ(pair.image.Rotate180(), pair.literal.Rotate180(nullptr));
    expectSame(pair);
  });
}

TEST(CxImageComparison, MirrorOfEightBits) {
  compareOverSources(3, [](Pair& pair) {
    if (pair.image.header.bitsPerPixel != 8) return;
    pair.image.Mirror();
    pair.literal.Mirror();
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
      pair.literal.MakeCenter(newWidth);
      ASSERT_NO_FATAL_FAILURE(expectSameFrame(pair));
      if (!pair.image.IsValid()) return;
      ASSERT_NO_FATAL_FAILURE(expectSamePixels(pair, offset, offset + columns));
      if (pair.image.GetWidth() == columns) continue;
      // From here on the margins are part of the picture: give them a value.
      for (std::int64_t y = 0; y < pair.image.GetHeight(); ++y) {
        for (std::int64_t x = 0; x < newWidth; ++x) {
          if (x >= offset && x < offset + columns) continue;
          pair.image.SetPixelIndex(x, y, 1);
          pair.literal.SetPixelIndex(x, y, 1);
        }
      }
    }
  });
}

TEST(CxImageComparison, Negative) {
  compareOverSources(5, [](Pair& pair) {
    pair.image.Negative();
    pair.literal.Negative();
    expectSame(pair);
  });
}

TEST(CxImageComparison, LightOfEveryLevel) {
  for (int brightness = -520; brightness <= 520; brightness += 13) {
    for (int contrast = -210; contrast <= 210; contrast += 7) {
      Source source = {256, 1, 8, 256, Bytes(256)};
      for (std::size_t i = 0; i < 256; ++i) source.bytes[i] = static_cast<std::uint8_t>(i);
      Pair pair;
      load(pair, source, false);
      ASSERT_TRUE(pair.image.Light(brightness, contrast));
      ASSERT_TRUE(pair.literal.Light(brightness, contrast));
      ASSERT_NO_FATAL_FAILURE(expectSame(pair)) << brightness << ' ' << contrast;
    }
  }
}

TEST(CxImageComparison, Lut) {
  std::mt19937 random(6);
  Bytes table(256);
  for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
  compareOverSources(7, [&](Pair& pair) {
    ASSERT_EQ(pair.image.Lut(table.data()), pair.literal.Lut(table.data()));
    expectSame(pair);
  });
}

TEST(CxImageComparison, IncreaseBpp) {
  compareOverSources(8, [](Pair& pair) {
    for (const std::uint32_t depth : {4u, 8u, 16u, 24u}) {
      ASSERT_EQ(pair.image.IncreaseBpp(depth), pair.literal.IncreaseBpp(depth)) << depth;
      ASSERT_NO_FATAL_FAILURE(expectSame(pair));
    }
  });
}

TEST(CxImageComparison, NearestIndexOfRandomPalettes) {
  std::mt19937 random(9);
  Pair pair;
  pair.image.Create(1, 1, 4, 0);
  pair.literal.Create(1, 1, 4, 0);
  for (int round = 0; round < 20000; ++round) {
    if (round % 50 == 0) {
      for (std::uint32_t byte = 0; byte < 64; ++byte) {
        const auto value = static_cast<std::uint8_t>(random() % 4 * 85);
        reinterpret_cast<std::uint8_t*>(pair.image.GetPalette())[byte] = value;
        reinterpret_cast<std::uint8_t*>(pair.literal.GetPalette())[byte] = value;
      }
    }
    const auto blue = static_cast<std::uint8_t>(random());
    const auto green = static_cast<std::uint8_t>(random());
    const auto red = static_cast<std::uint8_t>(random());
    ASSERT_EQ(pair.image.GetNearestIndex({blue, green, red, 0}),
              pair.literal.GetNearestIndex({blue, green, red, 0}));
  }
}

class CxImageDitherComparison : public testing::TestWithParam<int> {
 protected:
  void ditherBoth(Pair& pair) {
    ASSERT_EQ(pair.image.Dither(GetParam()), pair.literal.Dither(GetParam()));
    expectSame(pair);
  }

  void compare(const Source& source) {
    SCOPED_TRACE(nameOf(source));
    Pair pair;
    ASSERT_NO_FATAL_FAILURE(load(pair, source, false));
    ASSERT_NO_FATAL_FAILURE(ditherBoth(pair));
  }
};

TEST_P(CxImageDitherComparison, NoiseAtEveryDepth) {
  compareOverSources(10, [this](Pair& pair) { ditherBoth(pair); });
}

TEST_P(CxImageDitherComparison, FlatLevels) {
  for (int level = 0; level < 256; ++level) {
    const std::uint32_t width = 30 + static_cast<std::uint32_t>(level) % 7;
    Source source = {width, 20, 8, width, {}};
    source.bytes.assign(width * 20, static_cast<std::uint8_t>(level));
    ASSERT_NO_FATAL_FAILURE(compare(source)) << "level " << level;
  }
}

TEST_P(CxImageDitherComparison, Gradients) {
  for (const std::uint32_t steepness : {1u, 2u, 3u, 8u, 64u}) {
    for (const std::uint32_t slant : {0u, 1u, 5u}) {
      Source source = {300, 40, 8, 300, {}};
      for (std::uint32_t y = 0; y < 40; ++y) {
        for (std::uint32_t x = 0; x < 300; ++x) {
          source.bytes.push_back(static_cast<std::uint8_t>(x * steepness + y * slant));
        }
      }
      ASSERT_NO_FATAL_FAILURE(compare(source)) << steepness << ' ' << slant;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, CxImageDitherComparison,
                         testing::Values(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 100, -1));

}  // namespace
