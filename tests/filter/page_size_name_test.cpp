// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/page_size_name.h"

#include <gtest/gtest.h>

namespace {

using wren::filter::parsePageSizeName;

struct Row {
  const char* name;
  float width;
  float height;
};

TEST(PageSizeName, HoldsWidthAndHeight) {
  const Row rows[] = {
      {"X80MMY200MM", 80.0F, 200.0F},
      {"X72D5MMY100MM", 72.5F, 100.0F},
      {"X72MMY100D25MM", 72.0F, 100.25F},
      {"X80Y200M", 80.0F, 200.0F},
      {"X80Y200Mwhatever", 80.0F, 200.0F},
      {"XM8M0MY200M", 80.0F, 200.0F},  // every M in the width is skipped
      {"XYM", 0.0F, 0.0F},
      {"XD5YD25M", 0.5F, 0.25F},
      {"X1D2D3Y4M", 1.2F, 4.0F},  // a second point ends the number
      {"X1234567890123456789Y1M", 1234567890123456789.0F, 1.0F},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(parsePageSizeName(row.name).width, row.width) << row.name;
    EXPECT_EQ(parsePageSizeName(row.name).height, row.height) << row.name;
  }
}

TEST(PageSizeName, ThatBreaksThePatternHoldsNothing) {
  for (const char* name :
       {"",           "Letter",      "A4",         "Custom",    "Custom.72x150mm", "x80MMY200MM",
        "80MMY200MM", "X",           "X80",        "X80MM",     "X80MMY",          "X80MMY200",
        "X80MMY200D", "X80mmY200mm", "X80,5Y200M", "X-80Y200M", "X80MMY2Y00M",     "X80MMYX200M",
        "X80 Y200M",  "X80MMY 200M"}) {
    EXPECT_EQ(parsePageSizeName(name).width, 0.0F) << name;
    EXPECT_EQ(parsePageSizeName(name).height, 0.0F) << name;
  }
}

TEST(PageSizeName, WithMoreThan19CharactersInANumberHoldsNothing) {
  EXPECT_EQ(parsePageSizeName("X12345678901234567890Y1M").height, 0.0F);
  EXPECT_EQ(parsePageSizeName("X1Y12345678901234567890M").width, 0.0F);
  EXPECT_EQ(parsePageSizeName("X1Y1234567890123456789M").width, 1.0F);
  EXPECT_EQ(parsePageSizeName("X1D345678901234567890Y1M").height, 0.0F);
}

}  // namespace
