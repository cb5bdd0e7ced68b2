// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/picture.h"

#include <gtest/gtest.h>

#include <numeric>

namespace wren::preview {
namespace {

using Pixels = std::vector<std::uint8_t>;

TEST(Picture, IsCroppedToTheAreaThatLiesInIt) {
  const Picture picture = {4, 3, {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23}};
  const Picture part = cropped(picture, {1, 1, 2, 2});
  EXPECT_EQ(part.widthPx, 2u);
  EXPECT_EQ(part.heightPx, 2u);
  EXPECT_EQ(part.pixels, (Pixels{11, 12, 21, 22}));
  EXPECT_EQ(cropped(picture, {3, 1, 50, 50}).pixels, (Pixels{13, 23}));
  EXPECT_EQ(cropped(picture, {4, 0, 1, 1}).pixels, Pixels{});
  EXPECT_EQ(cropped(picture, {9, 9, 1, 1}).pixels, Pixels{});
  EXPECT_EQ(cropped(picture, {0, 3, 4, 1}).heightPx, 0u);
  EXPECT_EQ(cropped(picture, {2, 2, 1, 9}).pixels, Pixels{22});
}

struct ScaleCase {
  Picture source;
  Picture scaled;
};

class PictureScaledDown : public testing::TestWithParam<ScaleCase> {};

TEST_P(PictureScaledDown, HasTheMeanOfTheCoveredArea) {
  const auto& [source, expected] = GetParam();
  const Picture scaled = scaledDown(source, expected.widthPx);
  EXPECT_EQ(scaled.widthPx, expected.widthPx);
  EXPECT_EQ(scaled.heightPx, expected.heightPx);
  EXPECT_EQ(scaled.pixels, expected.pixels);
}

INSTANTIATE_TEST_SUITE_P(
    Means, PictureScaledDown,
    testing::Values(
        // Whole pixels: (0 + 10 + 20 + 30) / 4 and (100 + 100 + 200 + 200) / 4.
        ScaleCase{{4, 2, {0, 10, 100, 100, 20, 30, 200, 200}}, {2, 1, {15, 150}}},
        // Shared pixels: (0 + 90 / 2) / 1.5 and (90 / 2 + 255) / 1.5.
        ScaleCase{{3, 1, {0, 90, 255}}, {2, 1, {30, 200}}},
        // In both directions, a quarter of the middle pixel belongs to each mean:
        // (8 * 0 + 255 / 4) / 2.25 = 28.3.
        ScaleCase{{3, 3, {0, 0, 0, 0, 255, 0, 0, 0, 0}}, {2, 2, {28, 28, 28, 28}}},
        // 1.5 of 255 and 0 is 127.5, rounded up.
        ScaleCase{{2, 2, {255, 0, 0, 255}}, {1, 1, {128}}},
        // A corner's weight is 4 of 9; nothing of it is left for the next mean.
        ScaleCase{{3, 3, {1, 0, 1, 0, 0, 0, 1, 0, 1}}, {2, 2, {0, 0, 0, 0}}},
        ScaleCase{{3, 3, {2, 0, 2, 0, 0, 0, 1, 0, 1}}, {2, 2, {1, 1, 0, 0}}},
        // Half a row is rounded up: 3 * 2 / 4 rows.
        ScaleCase{{4, 3, Pixels(12, 60)}, {2, 2, {60, 60, 60, 60}}},
        // At least one row is left.
        ScaleCase{{4, 1, {10, 20, 30, 40}}, {1, 1, {25}}}));

TEST(Picture, IsNotScaledUp) {
  const Picture picture = {2, 1, {1, 2}};
  EXPECT_EQ(scaledDown(picture, 5).pixels, picture.pixels);
  EXPECT_EQ(scaledDown(picture, 5).widthPx, 2u);
  EXPECT_EQ(scaledDown(picture, 2).pixels, picture.pixels);
}

TEST(Picture, WithoutRowsIsNotScaled) {
  const Picture scaled = scaledDown({7, 0, {}}, 3);
  EXPECT_EQ(scaled.widthPx, 7u);
  EXPECT_EQ(scaled.heightPx, 0u);
}

TEST(Picture, KeepsItsMeanLevelAtAnOddScale) {
  Picture picture = Picture::white(1000, 70);
  for (std::size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = i % 2 == 0 ? 0 : 200;
  const Picture scaled = scaledDown(picture, 123);
  EXPECT_EQ(scaled.heightPx, 9u);  // 70 * 123 / 1000 = 8.6
  const double sum = std::accumulate(scaled.pixels.begin(), scaled.pixels.end(), 0.0);
  EXPECT_NEAR(sum / static_cast<double>(scaled.pixels.size()), 100.0, 0.5);
}

}  // namespace
}  // namespace wren::preview
