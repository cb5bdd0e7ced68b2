// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/control_commands.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/printer/recording_printer.h"
#include "tests/support/printer_bytes.h"

namespace {

using wren_test::hexOf;

template <typename Value>
std::string written(void (*write)(FILE*, const Value&), const Value& value) {
  wren_test::CaptureFile file;
  write(file.stream(), value);
  return hexOf(file.bytes());
}

std::string setupOf(const Settings& s) {
  return written(wren::job::writeJobSetup, s);
}
std::string pageStartOf(const Settings& s) {
  return written(wren::job::writePageSetup, s);
}
std::string pageEndOf(const Settings& s) {
  return written(wren::job::writePageEnd, s);
}
std::string jobEndOf(const Settings& s) {
  return written(wren::job::writeJobEnd, s);
}

constexpr char kBuzzerOff[] = "1F 1B 1F 42 65 65 70 06";
constexpr char kBuzzerOn[] = "1F 1B 1F 42 65 65 70 08";

TEST(ControlCommands, OfSettingsAtZero) {
  const Settings s;
  EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOff + " 1B 55 00");
  EXPECT_EQ(pageStartOf(s), "");
  EXPECT_EQ(pageEndOf(s), "1B 4A 10");
  EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76");
}

// Nothing is taken from a table, but -1 is still "not 0".
TEST(ControlCommands, OfSettingsThatThePpdLacks) {
  Settings s;
  s.bidiPrinting = s.pageCutType = s.docCutType = -1;
  s.buzzer1Setting = s.buzzer2Setting = s.cashDrawerSetting = s.cashDrawerPulseWidth = -1;
  s.feedCutAfterJobEnd = -1;
  EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOn);
  EXPECT_EQ(pageStartOf(s), "");
  EXPECT_EQ(pageEndOf(s), "1B 4A 10");
  EXPECT_EQ(jobEndOf(s), std::string("1B 4A F0 ") + kBuzzerOff + " 1B 76");
}

TEST(ControlCommands, DirectionByIndex) {
  Settings s;
  for (const auto& [index, expected] :
       {std::pair{0, " 1B 55 00"}, {1, " 1B 55 01"}, {2, ""}, {-1, ""}, {2147483647, ""}}) {
    s.bidiPrinting = index;
    EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOff + expected) << index;
  }
}

TEST(ControlCommands, CutsByIndex) {
  for (const auto& [index, cut] : {std::pair{0, ""},
                                   {1, " 1D 56 00"},
                                   {2, " 1D 56 01"},
                                   {3, ""},
                                   {4, ""},
                                   {-1, ""},
                                   {-2147483647, ""}}) {
    Settings s;
    s.pageCutType = index;
    EXPECT_EQ(pageEndOf(s), std::string("1B 4A 10") + cut) << index;
    s.docCutType = index;
    const std::string feed = index == 0 ? "" : "1B 4A 00" + std::string(cut) + " ";
    EXPECT_EQ(jobEndOf(s), feed + kBuzzerOff + " 1B 76") << index;
  }
}

TEST(ControlCommands, DocumentFeedIsSixteenTimesTheChoiceInOneByte) {
  for (const auto& [choice, feed] : {std::pair{0, "00"},
                                     {3, "30"},
                                     {5, "50"},
                                     {15, "F0"},
                                     {16, "00"},
                                     {17, "10"},
                                     {-1, "F0"},
                                     {2147483647, "F0"}}) {
    Settings s;
    s.docCutType = 2;
    s.feedCutAfterJobEnd = choice;
    EXPECT_EQ(jobEndOf(s), std::string("1B 4A ") + feed + " 1D 56 01 " + kBuzzerOff + " 1B 76")
        << choice;
  }
}

TEST(ControlCommands, NoDocumentCutMeansNoFeed) {
  Settings s;
  s.feedCutAfterJobEnd = 5;
  EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76");
}

TEST(ControlCommands, Buzzer1SoundsAtPageStartOrEnd) {
  Settings s;
  s.buzzer1OnTime = 4;
  s.buzzer1Repeat = 3;
  for (int setting = 0; setting <= 3; ++setting) {
    s.buzzer1Setting = setting;
    EXPECT_EQ(pageStartOf(s), setting == 1 ? "1B 42 03 04" : "") << setting;
    EXPECT_EQ(pageEndOf(s), setting == 2 ? "1B 4A 10 1B 42 03 04" : "1B 4A 10") << setting;
    const std::string state = setting == 0 ? kBuzzerOff : kBuzzerOn;
    EXPECT_EQ(setupOf(s), "1B 40 " + state + " 1B 55 00") << setting;
    EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76") << setting;
  }
}

TEST(ControlCommands, Buzzer1ComesBeforeThePageCut) {
  Settings s;
  s.buzzer1Setting = 2;
  s.buzzer1OnTime = 12;
  s.buzzer1Repeat = 3;
  s.pageCutType = 1;
  EXPECT_EQ(pageEndOf(s), "1B 4A 10 1B 42 03 01 1D 56 00");
}

TEST(ControlCommands, Buzzer2SoundsAtJobStartOrEndByTheSameCommand) {
  Settings s;
  s.buzzer2OnTime = 7;
  s.buzzer2Repeat = 2;
  s.buzzer2Setting = 1;
  EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOn + " 1B 55 00 1B 42 02 07");
  EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76");
  s.buzzer2Setting = 2;
  EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOn + " 1B 55 00");
  EXPECT_EQ(jobEndOf(s), std::string("1B 42 02 07 ") + kBuzzerOff + " 1B 76");
  EXPECT_EQ(pageStartOf(s), "");
  EXPECT_EQ(pageEndOf(s), "1B 4A 10");
}

// A value above 9 becomes 1 before the low byte is taken.
TEST(ControlCommands, BuzzerParametersAboveNineBecomeOne) {
  for (const auto& [value, byte] : {std::pair{0, "00"},
                                    {1, "01"},
                                    {9, "09"},
                                    {10, "01"},
                                    {255, "01"},
                                    {256, "01"},
                                    {-1, "FF"},
                                    {-256, "00"}}) {
    Settings s;
    s.buzzer1Setting = 1;
    s.buzzer1OnTime = value;
    s.buzzer1Repeat = 5;
    EXPECT_EQ(pageStartOf(s), std::string("1B 42 05 ") + byte) << value;
    s.buzzer1OnTime = 5;
    s.buzzer1Repeat = value;
    EXPECT_EQ(pageStartOf(s), std::string("1B 42 ") + byte + " 05") << value;
  }
}

TEST(ControlCommands, DrawerOpensAtJobStartOrEnd) {
  constexpr const char* kOnTimes[] = {"32", "4B", "64", "7D", "96", "AF", "C8", "E1", "FA"};
  Settings s;
  for (int width = 0; width <= 8; ++width) {
    const std::string pulse = std::string("1B 70 00 ") + kOnTimes[width] + " 32";
    s.cashDrawerPulseWidth = width;
    s.cashDrawerSetting = 1;
    EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOff + " 1B 55 00 " + pulse);
    EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76");
    s.cashDrawerSetting = 2;
    EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOff + " 1B 55 00");
    EXPECT_EQ(jobEndOf(s), pulse + " " + kBuzzerOff + " 1B 76");
  }
  for (const int width : {-1, 9}) {
    s.cashDrawerPulseWidth = width;
    EXPECT_EQ(jobEndOf(s), std::string(kBuzzerOff) + " 1B 76");
  }
}

TEST(ControlCommands, JobEndHasItsBlocksInOrder) {
  Settings s;
  s.docCutType = 1;
  s.feedCutAfterJobEnd = 3;
  s.buzzer2Setting = 2;
  s.buzzer2OnTime = 1;
  s.buzzer2Repeat = 2;
  s.cashDrawerSetting = 2;
  s.cashDrawerPulseWidth = 4;
  EXPECT_EQ(jobEndOf(s),
            std::string("1B 4A 30 1D 56 00 1B 42 02 01 1B 70 00 96 32 ") + kBuzzerOff + " 1B 76");
  EXPECT_EQ(written(wren::job::writeCancelledJobEnd, s),
            std::string("1B 4A 10 1B 4A 30 1D 56 00 ") + kBuzzerOff + " 1B 76");
}

TEST(ControlCommands, JobSetupHasItsBlocksInOrder) {
  Settings s;
  s.bidiPrinting = 1;
  s.buzzer2Setting = 1;
  s.buzzer2OnTime = 1;
  s.buzzer2Repeat = 2;
  s.cashDrawerSetting = 1;
  EXPECT_EQ(setupOf(s), std::string("1B 40 ") + kBuzzerOn + " 1B 55 01 1B 42 02 01 1B 70 00 32 32");
}

TEST(ControlCommands, EmptyCommandWritesNothing) {
  const unsigned char bytes[] = {1, 0, 2};
  EXPECT_EQ(written(wren::job::writeCommand, command{}), "");
  EXPECT_EQ(written(wren::job::writeCommand, command{3, bytes}), "01 00 02");
}

}  // namespace
