// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/tone_table.h"

#include <gtest/gtest.h>

#include <climits>
#include <numeric>
#include <span>

#include "tests/dither/dither_fixtures.h"
#include "tests/reference/cximage.h"
#include "tests/support/same_bytes.h"

namespace {

using namespace wren_test;

using wren::dither::makeToneTable;

struct Entry {
  int brightness, contrast;
  std::size_t level;
  int toned;
};

TEST(ToneTable, ShiftsByBrightnessAndScalesByContrast) {
  for (const auto& [brightness, contrast, level, toned] : {
           Entry{0, 0, 0, 0},       Entry{0, 0, 128, 128},  Entry{0, 0, 255, 255},
           Entry{200, 0, 0, 200},   Entry{200, 0, 54, 254}, Entry{200, 0, 55, 255},
           Entry{-100, 0, 100, 0},  Entry{-100, 0, 101, 1}, Entry{-100, 0, 255, 155},
           Entry{0, 100, 64, 0},    Entry{0, 100, 65, 2},   Entry{0, 100, 128, 128},
           Entry{0, 100, 200, 255}, Entry{0, -100, 0, 128}, Entry{0, -100, 255, 128},
           Entry{7, -100, 30, 135}, Entry{0, -200, 1, 255}, Entry{0, -200, 2, 254},
           Entry{0, -200, 255, 1},
       }) {
    EXPECT_EQ(makeToneTable(brightness, contrast)[level], toned)
        << brightness << ", " << contrast << ", level " << level;
  }
}

TEST(ToneTable, SaturatesAtTheEndsOfItsArguments) {
  for (const auto& [brightness, contrast, level, toned] : {
           Entry{INT_MAX, 0, 0, 255},
           Entry{INT_MAX, 0, 255, 255},
           Entry{INT_MIN, 0, 0, 0},
           Entry{INT_MIN, 0, 255, 0},
           Entry{0, INT_MAX, 127, 0},
           Entry{0, INT_MAX, 128, 128},
           Entry{0, INT_MAX, 129, 255},
           Entry{0, INT_MIN, 127, 255},
           Entry{0, INT_MIN, 129, 0},
       }) {
    EXPECT_EQ(makeToneTable(brightness, contrast)[level], toned)
        << brightness << ", " << contrast << ", level " << level;
  }
}

TEST(ToneTable, IsThatOfTheReferenceForEverySetting) {
  Bytes ramp(256);
  std::iota(ramp.begin(), ramp.end(), std::uint8_t{0});
  for (int brightness = -520; brightness <= 520; brightness += 13) {
    for (int contrast = -210; contrast <= 210; contrast += 7) {
      reference::CxImage image;
      image.CreateFromArray(ramp.data(), 256, 1, 8, 256, false);
      image.Light(brightness, contrast);
      ASSERT_TRUE(
          sameBytes(std::span{image.GetBits(0), 256}, makeToneTable(brightness, contrast), 256))
          << "brightness " << brightness << ", contrast " << contrast;
    }
  }
}

}  // namespace
