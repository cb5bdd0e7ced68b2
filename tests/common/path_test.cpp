// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/path.h"

#include <gtest/gtest.h>

namespace {

TEST(PathBasename, IsTheTextAfterTheLastSeparatorOfEitherKind) {
  const struct {
    const char* path;
    const char* name;
  } rows[] = {
      {"/usr/lib/cups/filter", "filter"},
      {"C:\\printers/wren\\filter", "filter"},
      {"C:\\printers\\wren/filter", "filter"},
      {"filter", "filter"},
      {"/usr/lib/", ""},
      {"folder\\", ""},
      {"", ""},
      {"/", ""},
  };
  for (const auto& row : rows) EXPECT_STREQ(wrenPathGetBasename(row.path), row.name) << row.path;
}

TEST(PathBasename, PointsIntoThePath) {
  const char path[] = "/a/b";
  EXPECT_EQ(wrenPathGetBasename(path), path + 3);
}

TEST(PathBasename, OfNullIsNull) {
  EXPECT_EQ(wrenPathGetBasename(nullptr), nullptr);
}

}  // namespace
