// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/halftone_type.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  DitherType type;
  int value;
  const char* name;
};

// "JarvisJudiceNinke" is not a typing error: PPDs and printed output depend on it.
constexpr Row kRows[] = {
    {None, 0, "None"},
    {FloydSteinberg, 1, "FloydSteinberg"},
    {Ordered, 2, "Ordered"},
    {Burkes, 3, "Burkes"},
    {Stucki, 4, "Stucki"},
    {JarvisJudiceNinke, 5, "JarvisJudiceNinke"},
    {Sierra, 6, "Sierra"},
    {StevensonArce, 7, "StevensonArce"},
    {QVDithering, 8, "QVDithering"},
};

TEST(HalftoneType, EveryValueHasItsName) {
  for (const Row& row : kRows) {
    EXPECT_EQ(row.type, row.value);
    EXPECT_STREQ(wrenHalftoneTypeToStr(static_cast<DitherType>(row.value)), row.name);
    EXPECT_EQ(wrenHalftoneTypeFromStr(row.name), row.value);
  }
}

TEST(HalftoneType, ValuesOutsideTheTableReadNone) {
  for (const int value : {9, 100, -1, -2147483647}) {
    EXPECT_STREQ(wrenHalftoneTypeToStr(static_cast<DitherType>(value)), "None") << value;
  }
}

TEST(HalftoneType, UnknownNamesAreNone) {
  for (const char* name : {"", "sierra", "SIERRA", "Sierra ", "Bayer", "Sierr", "8"}) {
    EXPECT_EQ(wrenHalftoneTypeFromStr(name), None) << name;
  }
}

TEST(HalftoneType, TakesFourBytes) {
  EXPECT_EQ(sizeof(DitherType), 4U);
}

}  // namespace
