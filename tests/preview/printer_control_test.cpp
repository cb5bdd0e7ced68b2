// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/printer_control.h"

#include <gtest/gtest.h>

namespace wren::preview {
namespace {

struct ControlCase {
  const char* line;
  ControlKind kind;
  std::uint64_t value = 0;
};

class PrinterControl : public testing::TestWithParam<ControlCase> {};

TEST_P(PrinterControl, IsParsed) {
  const ParsedControl parsed = parseControl(GetParam().line);
  ASSERT_TRUE(parsed.control.has_value()) << parsed.error;
  EXPECT_EQ(parsed.control->kind, GetParam().kind);
  EXPECT_EQ(parsed.control->value, GetParam().value);
  EXPECT_FALSE(parsed.control->trigger.has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Lines, PrinterControl,
    testing::Values(ControlCase{"paper ok", ControlKind::kPaperOk},
                    ControlCase{"paper near-end", ControlKind::kPaperNearEnd},
                    ControlCase{"  paper   out \r", ControlKind::kPaperOut},
                    ControlCase{"cover open", ControlKind::kCoverOpen},
                    ControlCase{"cover closed", ControlKind::kCoverClosed},
                    ControlCase{"error none", ControlKind::kErrorNone},
                    ControlCase{"error recoverable", ControlKind::kErrorRecoverable},
                    ControlCase{"error cutter", ControlKind::kErrorCutter},
                    ControlCase{"error unrecoverable", ControlKind::kErrorUnrecoverable},
                    ControlCase{"error temperature", ControlKind::kErrorTemperature},
                    ControlCase{"button held", ControlKind::kButtonHeld},
                    ControlCase{"button released", ControlKind::kButtonReleased},
                    ControlCase{"drawer high", ControlKind::kDrawerHigh},
                    ControlCase{"drawer low", ControlKind::kDrawerLow},
                    ControlCase{"answers on", ControlKind::kAnswersOn},
                    ControlCase{"answers off", ControlKind::kAnswersOff},
                    ControlCase{"stall", ControlKind::kStall}, ControlCase{"go", ControlKind::kGo},
                    ControlCase{"reset", ControlKind::kReset},
                    ControlCase{"vanish", ControlKind::kVanish},
                    ControlCase{"return", ControlKind::kReturn},
                    ControlCase{"power off", ControlKind::kPowerOff},
                    ControlCase{"power on", ControlKind::kPowerOn},
                    ControlCase{"baud 9600", ControlKind::kBaud, 9600},
                    ControlCase{"speed 150", ControlKind::kSpeed, 150},
                    ControlCase{"buffer 4", ControlKind::kBuffer, 4},
                    ControlCase{"buffer 64", ControlKind::kBuffer, 64},
                    ControlCase{"accept-delay 500", ControlKind::kAcceptDelay, 500},
                    // The ends of the ranges.
                    ControlCase{"baud 0", ControlKind::kBaud, 0},
                    ControlCase{"baud 10000000", ControlKind::kBaud, 10'000'000},
                    ControlCase{"speed 0", ControlKind::kSpeed, 0},
                    ControlCase{"speed 10000", ControlKind::kSpeed, 10'000},
                    ControlCase{"accept-delay 0", ControlKind::kAcceptDelay, 0},
                    ControlCase{"accept-delay 3600000", ControlKind::kAcceptDelay, 3'600'000}));

TEST(PrinterControlTrigger, SaysWhen) {
  const struct {
    const char* line;
    Trigger::Unit unit;
    std::uint64_t count;
  } cases[] = {{"paper out after 30 mm", Trigger::Unit::kMillimetres, 30},
               {"reset after 0 bytes", Trigger::Unit::kBytes, 0},
               {"go after 1000000000 mm", Trigger::Unit::kMillimetres, 1'000'000'000},
               {"baud 9600 after 1500 ms", Trigger::Unit::kMilliseconds, 1500}};
  for (const auto& one : cases) {
    const ParsedControl parsed = parseControl(one.line);
    ASSERT_TRUE(parsed.control && parsed.control->trigger) << one.line;
    EXPECT_EQ(parsed.control->trigger->unit, one.unit) << one.line;
    EXPECT_EQ(parsed.control->trigger->count, one.count) << one.line;
  }
}

TEST(PrinterControlError, NamesWhatIsWrong) {
  const struct {
    const char* line;
    const char* error;
  } cases[] = {
      {"", "'' is no command"},
      {"paper", "'paper' is no command"},
      {"Paper out", "'Paper out' is no command"},
      {"paper out now", "'paper out now' is no command"},
      {"buffer", "buffer wants a number from 4 to 64"},
      {"buffer 5x", "buffer wants a number from 4 to 64"},
      {"buffer 3", "buffer wants a number from 4 to 64"},
      {"buffer 65", "buffer wants a number from 4 to 64"},
      {"baud -1", "baud wants a number from 0 to 10000000"},
      {"speed 10 mm", "speed wants a number from 0 to 10000"},
      {"accept-delay 99999999999999999999", "accept-delay wants a number from 0 to 3600000"},
      {"stall after", "'after' wants a number and mm, bytes or ms"},
      {"stall after 5", "'after' wants a number and mm, bytes or ms"},
      {"stall after x mm", "'after' wants a number and mm, bytes or ms"},
      {"stall after 5 m", "'after' wants a number and mm, bytes or ms"},
      {"stall after 1000000001 ms", "'after' wants a number and mm, bytes or ms"},
      {"stall after 5 mm now", "'after' wants a number and mm, bytes or ms"},
      {"after 5 mm", "'' is no command"},
      {"blue after 5 mm", "'blue' is no command"},
      {"  paper\t blue ", "'paper blue' is no command"},
      {"buffer 3 after 5 mm", "buffer wants a number from 4 to 64"},
  };
  for (const auto& one : cases) {
    const ParsedControl parsed = parseControl(one.line);
    EXPECT_FALSE(parsed.control.has_value()) << one.line;
    EXPECT_EQ(parsed.error, one.error);
  }
}

}  // namespace
}  // namespace wren::preview
