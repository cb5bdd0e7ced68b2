// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/printer_commands.h"

#include <gtest/gtest.h>

#include "job/control_commands.h"
#include "tests/printer/recording_printer.h"
#include "tests/support/printer_bytes.h"

namespace wren::job {
namespace {

using wren_test::hexOf;

std::string bytesOf(const PrinterCommand& command, const Settings& settings,
                    CancelCheck cancel = {}) {
  wren_test::CaptureFile file;
  EXPECT_EQ(writePrinterCommand(file.stream(), command, settings, cancel), nullptr);
  return file.bytes();
}

std::string hex(CommandKind kind, const Settings& settings,
                std::optional<std::int32_t> value = std::nullopt) {
  return hexOf(bytesOf({kind, value}, settings));
}

// Why a command is refused; it must not write anything then.
std::string refusal(CommandKind kind, const Settings& settings,
                    std::optional<std::int32_t> value = std::nullopt) {
  wren_test::CaptureFile file;
  const char* fault = writePrinterCommand(file.stream(), {kind, value}, settings);
  EXPECT_EQ(hexOf(file.bytes()), "");
  return fault == nullptr ? "" : fault;
}

TEST(PrinterCommands, OpenTheDrawerWithThePulseOfTheQueueAlone) {
  const char* const kPulses[] = {"32", "4B", "64", "7D", "96", "AF", "C8", "E1", "FA"};
  Settings settings;
  for (const int setting : {-1, 0, 1, 2}) {
    settings.cashDrawerSetting = setting;  // when a job opens the drawer, which is not asked
    for (int i = 0; i < 9; ++i) {
      settings.cashDrawerPulseWidth = i;
      EXPECT_EQ(hex(CommandKind::kOpenDrawer, settings),
                std::string("1B 70 00 ") + kPulses[i] + " 32");
    }
  }
}

TEST(PrinterCommands, RefuseADrawerWithoutAPulse) {
  for (const int index : {-1, 9}) {
    Settings settings;
    settings.cashDrawerPulseWidth = index;
    EXPECT_EQ(refusal(CommandKind::kOpenDrawer, settings),
              "the queue has no drawer pulse (CashDrawerPulseWidth)");
  }
}

TEST(PrinterCommands, BeepBetweenOnAndOff) {
  const struct {
    int repeat;
    int onTime;
    const char* parameters;
  } rows[] = {{1, 1, "01 01"},
              {3, 5, "03 05"},
              {0, 9, "00 09"},
              {10, 4, "01 04"},  // above 9 is 1, as in a job
              {-1, -1, "01 01"}};
  for (const auto& row : rows) {
    Settings settings;
    settings.buzzer1Repeat = settings.buzzer1OnTime = 7;
    settings.buzzer2Repeat = row.repeat;
    settings.buzzer2OnTime = row.onTime;
    EXPECT_EQ(hex(CommandKind::kBeep, settings), std::string("1F 1B 1F 42 65 65 70 08 1B 42 ") +
                                                     row.parameters + " 1F 1B 1F 42 65 65 70 06");
  }
}

TEST(PrinterCommands, CutAfterTheFeedOfTheQueue) {
  const struct {
    int docCutType;
    int feed;
    std::optional<std::int32_t> asked;
    const char* bytes;
  } rows[] = {
      {1, 12, {}, "1B 4A C0 1D 56 00"},
      {2, 12, {}, "1B 4A C0 1D 56 01"},
      {2, 12, kFullCutType, "1B 4A C0 1D 56 00"},
      {1, 15, kPartialCutType, "1B 4A F0 1D 56 01"},
      {0, 3, kFullCutType, "1B 4A 30 1D 56 00"},
      {-1, 1, kPartialCutType, "1B 4A 10 1D 56 01"},
      {2, 0, {}, "1D 56 01"},   // a feed of nothing is left out
      {2, -1, {}, "1D 56 01"},  // so is one that the printer lacks
  };
  for (const auto& row : rows) {
    Settings settings;
    settings.docCutType = row.docCutType;
    settings.feedCutAfterJobEnd = row.feed;
    settings.pageCutType = 1;
    EXPECT_EQ(hex(CommandKind::kCut, settings, row.asked), row.bytes);
  }
}

TEST(PrinterCommands, RefuseTheCutOfAQueueThatDoesNotCut) {
  for (const int type : {-1, 0, 3}) {
    Settings settings;
    settings.docCutType = type;
    settings.feedCutAfterJobEnd = 5;
    EXPECT_EQ(refusal(CommandKind::kCut, settings),
              "the queue does not cut (DocCutType); ask for a full or partial cut");
  }
}

// 16 units to a millimetre, at most 255 to a command.
TEST(PrinterCommands, FeedInAsManyStepsAsItTakes) {
  const Settings settings;
  EXPECT_EQ(hex(CommandKind::kFeed, settings, 1), "1B 4A 10");
  EXPECT_EQ(hex(CommandKind::kFeed, settings, 15), "1B 4A F0");
  EXPECT_EQ(hex(CommandKind::kFeed, settings, 16), "1B 4A FF 1B 4A 01");
  EXPECT_EQ(hex(CommandKind::kFeed, settings, 40), "1B 4A FF 1B 4A FF 1B 4A 82");
  EXPECT_EQ(hex(CommandKind::kFeed, settings, 255),  // 16 times 255
            "1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF "
            "1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF 1B 4A FF");
}

struct Outline {
  std::string start;
  std::string end;
  std::size_t bands = 0;
};

// What stands around the bands of a page.
Outline outlineOf(const std::string& bytes) {
  Outline outline;
  const auto commands = wren_test::decodePrinterBytes(bytes);
  for (std::size_t i = 0; i < commands.size(); ++i) {
    const bool isBand = commands[i].name == "columns";
    outline.bands += isBand ? 1 : 0;
    const bool isFeedOfBand = i > 0 && commands[i - 1].name == "columns";
    if (!isBand && !isFeedOfBand)
      (outline.bands == 0 ? outline.start : outline.end) += commands[i].bytes;
  }
  return {hexOf(outline.start), hexOf(outline.end), outline.bands};
}

// A drawer that opens and a buzzer that sounds in each job keep still.
TEST(PrinterCommands, PrintTheSelfTestPageWithWhatItNeedsAroundIt) {
  Settings settings;
  settings.bidiPrinting = 1;
  settings.cashDrawerSetting = 1;
  settings.buzzer1Setting = settings.buzzer2Setting = 2;
  settings.pageCutType = 1;
  settings.docCutType = 2;
  settings.feedCutAfterJobEnd = 12;
  const auto page = outlineOf(bytesOf({CommandKind::kPrintSelfTestPage, {}}, settings));
  EXPECT_EQ(page.start, "1B 40 1B 55 01 1B 3C");
  EXPECT_EQ(page.end, "1B 4A 10 1B 4A C0 1D 56 01");
  EXPECT_GT(page.bands, 100U);
  settings.docCutType = 0;
  EXPECT_EQ(outlineOf(bytesOf({CommandKind::kPrintSelfTestPage, {}}, settings)).end, "1B 4A 10");
}

TEST(PrinterCommands, EndTheSelfTestPageWithFeedAndCutWhenCancelled) {
  Settings settings;
  settings.docCutType = 1;
  int asked = 0;
  const CancelCheck afterThreeBands(
      [](const void* count) { return ++*static_cast<int*>(const_cast<void*>(count)) > 3; }, &asked);
  const auto page =
      outlineOf(bytesOf({CommandKind::kPrintSelfTestPage, {}}, settings, afterThreeBands));
  EXPECT_EQ(page.bands, 3U);
  EXPECT_EQ(page.end, "1B 4A 10 1B 4A 00 1D 56 00");
}

}  // namespace
}  // namespace wren::job
