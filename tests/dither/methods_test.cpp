// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What each method number does, by examples worked out by hand.

#include "dither/methods.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "tests/dither/dither_fixtures.h"
#include "tests/support/same_bytes.h"

namespace {

using namespace wren_test;

constexpr int kFloydSteinbergNumber = 8;

TEST(Methods, NumbersOtherThan0To7AreFloydSteinberg) {
  using wren::dither::methodIndex;
  for (std::int64_t number = 0; number < 8; ++number) {
    EXPECT_EQ(methodIndex(number), static_cast<std::size_t>(number));
  }
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t number : {std::int64_t{8}, std::int64_t{9}, std::int64_t{100},
                                    std::int64_t{-1}, Limits::max(), Limits::min()}) {
    EXPECT_EQ(methodIndex(number), 8U) << number;
  }
}

// The lowest white level of each position of the 4 x 4 matrix.
struct WhiteFrom {
  int method;
  std::array<int, 16> level;
};

void PrintTo(const WhiteFrom& row, std::ostream* out) {
  *out << "method " << row.method;
}

class OrderedMethods : public testing::TestWithParam<WhiteFrom> {};

TEST_P(OrderedMethods, TurnWhiteAboveTheirThresholds) {
  const auto& [method, whiteFrom] = GetParam();
  for (int level = 0; level < 256; ++level) {
    Bytes expected;
    for (const int from : whiteFrom) expected.push_back(level >= from ? 1 : 0);
    EXPECT_TRUE(
        sameBytes(expected, dithered(method, 4, Bytes(16, static_cast<std::uint8_t>(level))), 4))
        << "level " << level;
  }
}

// The ordered method is white where level * 16 / 255, truncated, is above the index.
INSTANTIATE_TEST_SUITE_P(Methods, OrderedMethods,
                         testing::Values(WhiteFrom{0,
                                                   {129, 129, 129, 129,  //
                                                    129, 129, 129, 129,  //
                                                    129, 129, 129, 129,  //
                                                    129, 129, 129, 129}},
                                         WhiteFrom{1,
                                                   {16, 144, 48, 176,   //
                                                    208, 80, 240, 112,  //
                                                    64, 192, 32, 160,   //
                                                    255, 128, 224, 96}},
                                         WhiteFrom{7,
                                                   {1, 193, 49, 241,    //
                                                    129, 65, 177, 113,  //
                                                    33, 225, 17, 209,   //
                                                    161, 97, 145, 81}}));

// The error term that a black pixel of level 128 gives to a neighbour that gets no other.
struct Receiver {
  int method;
  std::size_t dx, dy;
  int term;
};

void PrintTo(const Receiver& receiver, std::ostream* out) {
  *out << "method " << receiver.method << ", neighbour " << receiver.dx << ',' << receiver.dy
       << ", error term " << receiver.term;
}

class DiffusionMethods : public testing::TestWithParam<Receiver> {};

// Raised to 128 the neighbour stays black; at 129 it becomes white.
TEST_P(DiffusionMethods, GiveTheirWeightOfTheError) {
  const auto& [method, dx, dy, term] = GetParam();
  const std::size_t width = dx + 1;
  for (const int above : {0, 1}) {
    Bytes levels(width * (dy + 1), 0);
    levels.front() = 128;
    levels.back() = static_cast<std::uint8_t>(128 - term + above);
    EXPECT_EQ(dithered(method, width, levels).back(), above);
  }
}

INSTANTIATE_TEST_SUITE_P(
    AlongTheRow, DiffusionMethods,
    testing::Values(Receiver{2, 1, 0, 128 * 8 / 32}, Receiver{3, 1, 0, 128 * 8 / 42},
                    Receiver{4, 1, 0, 128 * 7 / 48}, Receiver{5, 1, 0, 128 * 5 / 32},
                    Receiver{6, 2, 0, 128 * 32 / 200}, Receiver{8, 1, 0, 128 * 7 / 16}));

INSTANTIATE_TEST_SUITE_P(
    DownTheColumn, DiffusionMethods,
    testing::Values(Receiver{2, 0, 1, 128 * 8 / 32}, Receiver{3, 0, 1, 128 * 8 / 42},
                    Receiver{4, 0, 1, 128 * 7 / 48}, Receiver{5, 0, 1, 128 * 5 / 32},
                    Receiver{6, 0, 2, 128 * 26 / 200}, Receiver{8, 0, 1, 128 * 5 / 16}));

struct FirstRow {
  Bytes levels;
  Bytes dots;
};

// Level 100 adds 100 * 7 / 16 = 43; level 200 adds -55 * 7 / 16 = -24, truncated toward 0.
TEST(FloydSteinberg, TruncatesErrorTermsTowardZero) {
  for (const auto& [levels, dots] :
       {FirstRow{{200}, {1}}, FirstRow{{100, 86}, {0, 1}}, FirstRow{{100, 85}, {0, 0}},
        FirstRow{{200, 153}, {1, 1}}, FirstRow{{200, 152}, {1, 0}}}) {
    EXPECT_EQ(dithered(kFloydSteinbergNumber, levels.size(), levels), dots);
  }
}

class PageBorders : public testing::TestWithParam<int> {};

// Two pixels at opposite borders of a black page, both next to the threshold and each with
// the largest error there is. An error term that wraps to the next row instead of being
// dropped changes the other pixel.
void expectNoTermAcross(int method, int level, std::size_t fromX, std::size_t toX,
                        std::size_t toY) {
  constexpr std::size_t kWidth = 16;
  Bytes levels(kWidth * 6, 0);
  levels[fromX] = static_cast<std::uint8_t>(level);
  levels[kWidth * toY + toX] = static_cast<std::uint8_t>(level);
  const std::uint8_t isWhite = level > 128 ? 1 : 0;
  Bytes expected(kWidth * 6, 0);
  expected[fromX] = isWhite;
  expected[kWidth * toY + toX] = isWhite;
  EXPECT_TRUE(sameBytes(expected, dithered(method, kWidth, levels), kWidth))
      << method << ": from " << fromX << ",0 to " << toX << ',' << toY;
}

TEST_P(PageBorders, DropErrorTermsThatFallOutside) {
  for (const int level : {128, 129}) {
    for (std::size_t reach = 0; reach < 3; ++reach) {
      for (std::size_t y = 1; y < 5; ++y) expectNoTermAcross(GetParam(), level, 15, reach, y);
      for (std::size_t y = 0; y < 4; ++y) expectNoTermAcross(GetParam(), level, 0, 15 - reach, y);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Diffusions, PageBorders, testing::Values(2, 3, 4, 5, 6, 8));

}  // namespace
