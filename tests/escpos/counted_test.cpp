// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/counted.h"

#include <gtest/gtest.h>

namespace wren::escpos {
namespace {

TEST(Counted, AddsAnSForEveryCountButOne) {
  EXPECT_EQ(counted(0, "page"), "0 pages");
  EXPECT_EQ(counted(1, "page"), "1 page");
  EXPECT_EQ(counted(2, "page"), "2 pages");
  EXPECT_EQ(counted(UINT64_MAX, "page"), "18446744073709551615 pages");
}

}  // namespace
}  // namespace wren::escpos
