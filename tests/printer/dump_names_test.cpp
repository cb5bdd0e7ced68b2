// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/dump_names.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::tm moment(int year, int month, int day, int hour, int minute, int second) {
  std::tm when = {};
  when.tm_year = year - 1900;
  when.tm_mon = month - 1;
  when.tm_mday = day;
  when.tm_hour = hour;
  when.tm_min = minute;
  when.tm_sec = second;
  return when;
}

TEST(DumpNames, HoldDateTimeAndNumberWithoutPadding) {
  EXPECT_STREQ(formatDumpPath(kOriginDumpFormat, moment(2024, 3, 7, 9, 5, 1), 0).text,
               "spool/origin_2024-3-7_9_5_1_0.bmp");
  EXPECT_STREQ(formatDumpPath(kDitheredDumpFormat, moment(2031, 12, 31, 23, 59, 60), 1234567).text,
               "spool/dithered_2031-12-31_23_59_60_1234567.bmp");
  EXPECT_STREQ(formatDumpPath(kPrintedDumpFormat, moment(2024, 1, 1, 0, 0, 0), 7).text,
               "spool/prnimg_2024-1-1_0_0_0_7.bmp");
}

TEST(DumpNames, AreCutWhenTheyDoNotFit) {
  const std::string format(2000, 'x');
  EXPECT_EQ(std::string(formatDumpPath(format.c_str(), moment(2024, 1, 1, 0, 0, 0), 0).text).size(),
            sizeof(DumpPath) - 1);
}

}  // namespace
