// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/reader.h"

#include <gtest/gtest.h>

#include "tests/escpos/printer_streams.h"

namespace wren::escpos {
namespace {

using streams::feed;

TEST(Reader, ReportsThatPrintingHasStopped) {
  PaperLimits limits;
  limits.lengthUnits = 2;
  Reader reader(limits);
  EXPECT_TRUE(reader.feed(feed(2)));
  EXPECT_FALSE(reader.feed(feed(1)));
  EXPECT_FALSE(reader.feed(feed(1)));
  reader.finish();
  EXPECT_EQ(reader.bytesTaken(), 6u);
  EXPECT_EQ(reader.printer().totals().problems, 1u);
}

}  // namespace
}  // namespace wren::escpos
