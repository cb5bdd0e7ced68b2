// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/debug_image_path.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using wren::printer::formatImagePath;
using wren::printer::makeImageFormat;

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

std::string format(const std::string& folder, const char* name) {
  char text[256];
  EXPECT_TRUE(makeImageFormat(folder, name, text, sizeof text));
  return text;
}

TEST(DebugImagePath, TemplatesAreThoseOfTheSpoolFolder) {
  using namespace wren::printer;
  const struct {
    const char* name;
    const char* expected;
  } rows[] = {
      {kPrintedImageName, "/var/spool/cups/tmp/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp"},
      {kOriginImageName, "/var/spool/cups/tmp/origin_%d-%d-%d_%d_%d_%d_%ld.bmp"},
      {kDitheredImageName, "/var/spool/cups/tmp/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp"},
  };
  for (const auto& row : rows) EXPECT_EQ(format(kSpoolFolder, row.name), row.expected);
}

TEST(DebugImagePath, FolderEndsWithASlashAndItsPercentSignsStay) {
  const struct {
    const char* folder;
    const char* path;
  } rows[] = {{"a/b", "a/b/x7"}, {"a/b/", "a/b/x7"}, {"50%d/%s", "50%d/%s/x7"}, {"", "x7"}};
  for (const auto& row : rows) {
    const std::string text = format(row.folder, "x%d");
    EXPECT_STREQ(formatImagePath(text.c_str(), moment(7, 1, 1, 0, 0, 0), 0).text, row.path);
  }
}

TEST(DebugImagePath, FormatThatDoesNotFitIsReportedAndEmpty) {
  char text[8];
  EXPECT_TRUE(makeImageFormat("abc", "def", text, sizeof text));
  EXPECT_STREQ(text, "abc/def");
  EXPECT_FALSE(makeImageFormat("abcd", "def", text, sizeof text));
  EXPECT_STREQ(text, "");
}

TEST(DebugImagePath, HoldsDateTimeAndNumberWithoutPadding) {
  const struct {
    std::tm when;
    long number;
    const char* path;
  } rows[] = {
      {moment(2024, 3, 7, 9, 5, 1), 0, "s/origin_2024-3-7_9_5_1_0.bmp"},
      {moment(2031, 12, 31, 23, 59, 60), 1234567, "s/origin_2031-12-31_23_59_60_1234567.bmp"},
  };
  const std::string text = format("s", wren::printer::kOriginImageName);
  for (const auto& row : rows) {
    EXPECT_STREQ(formatImagePath(text.c_str(), row.when, row.number).text, row.path);
  }
}

TEST(DebugImagePath, IsCutIfItDoesNotFit) {
  const std::string text(2000, 'x');
  EXPECT_EQ(std::string(formatImagePath(text.c_str(), moment(2024, 1, 1, 0, 0, 0), 0).text).size(),
            1279U);
}

}  // namespace
