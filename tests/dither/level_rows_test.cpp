// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/level_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "tests/dither/dither_fixtures.h"
#include "tests/support/same_bytes.h"
#include "tests/support/vector_levels.h"

namespace {

using namespace wren_test;

using wren::dither::LevelRows;

struct ToneCurve {
  const char* name;
  int (*curve)(int level);  // clamped to 0..255; null for no tone table
};

const ToneCurve kToneCurves[] = {
    {"none", nullptr},
    {"identity", [](int level) { return level; }},
    {"brighter", [](int level) { return level + 50; }},
    {"darker", [](int level) { return level - 77; }},
    {"all white", [](int level) { return level + 255; }},
    {"all black", [](int level) { return level - 255; }},
    {"curve", [](int level) { return level * level / 255; }},
    {"a shift but for one level", [](int level) { return level + (level == 190 ? 51 : 50); }},
};

Bytes tableOf(const ToneCurve& tone) {
  Bytes table;
  for (int level = 0; tone.curve != nullptr && level < 256; ++level) {
    table.push_back(static_cast<std::uint8_t>(std::clamp(tone.curve(level), 0, 255)));
  }
  return table;
}

// Row `y` of a sample as it is to be dithered.
Bytes expectedRow(const Sample& sample, std::size_t y) {
  const std::size_t from = sample.bottomUp ? sample.height - 1 - y : y;
  Bytes row(sample.levels.begin() + static_cast<std::ptrdiff_t>(from * sample.width),
            sample.levels.begin() + static_cast<std::ptrdiff_t>((from + 1) * sample.width));
  if (!sample.tone.empty()) {
    for (auto& level : row) level = sample.tone[level];
  }
  if (sample.mirrored) std::reverse(row.begin(), row.end());
  return row;
}

void expectRows(const Sample& sample) {
  for (const bool copied : {false, true}) {
    const SampleBuffers buffers(sample);
    const LevelRows rows(buffers.page());
    for (std::size_t y = 0; y < sample.height; ++y) {
      const std::uint8_t* levels = copied ? rows.levelsInPlace(y) : rows.levels(y);
      ASSERT_TRUE(sameBytes(expectedRow(sample, y), std::span{levels, sample.width},
                            std::max<std::size_t>(sample.width, 1)))
          << "row " << y;
    }
  }
}

class LevelRowsAtLevel : public VectorLevelTest {};

TEST_P(LevelRowsAtLevel, AreTonedMirroredAndTakenFromEitherEndAtEveryWidth) {
  Random random(1);
  for (const ToneCurve& tone : kToneCurves) {
    for (std::size_t width = 0; width <= 70; ++width) {
      for (const bool mirrored : {false, true}) {
        for (const bool bottomUp : {false, true}) {
          Sample sample = makeSample(random, Content::kNoise, width, 3);
          sample.tone = tableOf(tone);
          sample.mirrored = mirrored;
          sample.bottomUp = bottomUp;
          sample.levelPadding = 3;
          ASSERT_NO_FATAL_FAILURE(expectRows(sample)) << tone.name << ", width " << width;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelRowsAtLevel, everyVectorLevel(), vectorLevelTestName);

TEST(LevelRows, ReadRowsThatNeedNoChangeWhereTheyAre) {
  Random random(2);
  const SampleBuffers buffers(makeSample(random, Content::kNoise, 20, 2));
  EXPECT_EQ(LevelRows(buffers.page()).levels(0), buffers.page().levels);
  EXPECT_TRUE(sameBytes(Bytes(40, kUntouched), buffers.dots(), 20));
}

TEST(LevelRows, AreCopiedToTheDotsOnRequest) {
  Random random(3);
  const SampleBuffers buffers(makeSample(random, Content::kNoise, 20, 2));
  EXPECT_EQ(LevelRows(buffers.page()).levelsInPlace(1), buffers.page().dots + 20);
}

TEST(LevelRows, ReuseTheirPlacesInARing) {
  Random random(4);
  const SampleBuffers buffers(makeSample(random, Content::kNoise, 20, 60));
  wren::dither::Page page = buffers.page();
  page.dotRows = 48;
  const LevelRows rows(page);
  EXPECT_EQ(rows.dots(47), page.dots + 47 * 20);
  EXPECT_EQ(rows.dots(48), page.dots);
  EXPECT_EQ(rows.levelsInPlace(59), page.dots + 11 * 20);
}

TEST(LevelRows, FlipDotsOfAnInvertedPage) {
  wren::dither::Page page;
  EXPECT_EQ(LevelRows(page).flip(), 0);
  page.inverted = true;
  EXPECT_EQ(LevelRows(page).flip(), 255);
}

}  // namespace
