// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The bytes themselves are tested in tests/job.

#include "filter/commands.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "tests/support/printer_bytes.h"

namespace {

std::string written(const std::function<void()>& routine) {
  testing::internal::CaptureStdout();
  routine();
  std::fflush(stdout);
  return wren_test::hexOf(testing::internal::GetCapturedStdout());
}

TEST(Commands, GoToStandardOutput) {
  Settings s;
  s.buzzer1Setting = 1;
  s.buzzer1OnTime = 4;
  s.buzzer1Repeat = 3;
  s.pageCutType = 2;
  s.docCutType = 1;
  s.feedCutAfterJobEnd = 3;
  const unsigned char bytes[] = {1, 0, 2};
  EXPECT_EQ(written([&] { jobSetup(s); }), "1B 40 1F 1B 1F 42 65 65 70 08 1B 55 00");
  EXPECT_EQ(written([&] { pageSetup(s, cups_page_header2_s{}); }), "1B 42 03 04");
  EXPECT_EQ(written([&] { endPage(s); }), "1B 4A 10 1D 56 01");
  EXPECT_EQ(written([&] { endJob(s); }), "1B 4A 30 1D 56 00 1F 1B 1F 42 65 65 70 06 1B 76");
  EXPECT_EQ(written([&] { outputCommand({3, bytes}); }), "01 00 02");
}

}  // namespace
