// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/command.h"

#include <gtest/gtest.h>

#include "tests/escpos/printer_streams.h"

namespace wren::escpos {
namespace {

using streams::Bytes;
using streams::hex;
using streams::operator+;

Command commandOf(const Bytes& bytes) {
  return {kindOf(bytes), 0, bytes.size(), bytes};
}

struct Known {
  const char* bytes;
  CommandKind kind;
  const char* meaning;
};

class KnownCommand : public testing::TestWithParam<Known> {};

TEST_P(KnownCommand, IsMeasuredByteByByteNamedAndDescribed) {
  const Bytes bytes = hex(GetParam().bytes);
  for (std::size_t have = 0; have < bytes.size(); ++have) {
    const auto measure = measureCommand(std::span(bytes).first(have));
    EXPECT_TRUE(measure.known) << have;
    EXPECT_GT(measure.length, have) << have;
    EXPECT_LE(measure.length, bytes.size()) << have;
  }
  const auto whole = measureCommand(bytes);
  EXPECT_TRUE(whole.known);
  EXPECT_EQ(whole.length, bytes.size());
  EXPECT_EQ(kindOf(bytes), GetParam().kind);
  EXPECT_EQ(describe(commandOf(bytes)), GetParam().meaning);
}

INSTANTIATE_TEST_SUITE_P(
    All, KnownCommand,
    testing::Values(
        Known{"00", CommandKind::kNul, "1 zero byte"},
        Known{"1B40", CommandKind::kInitialise, "initialise the printer"},
        Known{"1B3C", CommandKind::kHome, "print head home, a page begins"},
        Known{"1B2A000200 FF01", CommandKind::kBitImage,
              "bit image, single density, 2 columns, 9 dots"},
        Known{"1B2A010100 80", CommandKind::kBitImage,
              "bit image, double density, 1 column, 1 dot"},
        Known{"1B4A10", CommandKind::kFeed, "print and feed 16 units (8 rows)"},
        Known{"1B4A01", CommandKind::kFeed, "print and feed 1 unit (0 and a half rows)"},
        Known{"1D5600", CommandKind::kCut, "full cut"},
        Known{"1D5601", CommandKind::kCut, "partial cut"},
        Known{"1B70003232", CommandKind::kDrawerPulse,
              "drawer pulse on connector 0, 100 ms on, 100 ms off"},
        Known{"1B7001FA32", CommandKind::kDrawerPulse,
              "drawer pulse on connector 1, 500 ms on, 100 ms off"},
        Known{"1B5500", CommandKind::kDirection, "unidirectional printing off"},
        Known{"1B5501", CommandKind::kDirection, "unidirectional printing on"},
        // The lowest bit alone counts.
        Known{"1B55FE", CommandKind::kDirection, "unidirectional printing off"},
        Known{"1B5503", CommandKind::kDirection, "unidirectional printing on"},
        Known{"1B420301", CommandKind::kBeep, "beep 3 times, on-time 1"},
        Known{"1F1B1F4265657006", CommandKind::kBuzzerSetup, "buzzer off"},
        Known{"1F1B1F4265657008", CommandKind::kBuzzerSetup, "buzzer on"},
        Known{"1F1B1F4265657007", CommandKind::kBuzzerSetup, "buzzer set-up 7"},
        Known{"1B76", CommandKind::kStatusRequest, "ask for the paper status"},
        Known{"100401", CommandKind::kRealTimeStatus, "real-time status of the printer"},
        Known{"100402", CommandKind::kRealTimeStatus, "real-time status of the cause of off-line"},
        Known{"100403", CommandKind::kRealTimeStatus, "real-time status of the cause of an error"},
        Known{"100404", CommandKind::kRealTimeStatus, "real-time status of the roll paper sensor"},
        Known{"100501", CommandKind::kRealTimeRecovery, "real-time recovery"},
        Known{"100502", CommandKind::kRealTimeRecovery,
              "real-time recovery, the buffer is cleared"},
        Known{"1014010001", CommandKind::kRealTimePulse,
              "real-time drawer pulse on connector 0, 100 ms on"},
        Known{"1014010108", CommandKind::kRealTimePulse,
              "real-time drawer pulse on connector 1, 800 ms on"},
        Known{"1D7201", CommandKind::kTransmitStatus, "ask for the paper status in turn"},
        Known{"1D7231", CommandKind::kTransmitStatus, "ask for the paper status in turn"},
        Known{"1D7202", CommandKind::kTransmitStatus, "ask for the drawer status in turn"},
        Known{"1D7232", CommandKind::kTransmitStatus, "ask for the drawer status in turn"}));

TEST(RealTimeCommands, AreThoseThatBeginWithDataLinkEscape) {
  for (const char* bytes : {"100401", "100502", "1014010001"}) {
    EXPECT_TRUE(isRealTime(kindOf(hex(bytes)))) << bytes;
  }
  for (const char* bytes : {"00", "1B40", "1B4A10", "1B70003232", "1B76", "1D5600", "1D7201"}) {
    EXPECT_FALSE(isRealTime(kindOf(hex(bytes)))) << bytes;
  }
}

TEST(UnknownCommand, IsDetectedAtTheFirstByteThatFitsNoCommand) {
  for (const char* bytes :
       {"41",         "1B41",       "1B2A02", "1B2A21",     "1B7002", "1D57",   "1D5602",
        "1D5641",     "1F40",       "1F1B40", "1F1B1F4266", "FF",     "1000",   "1013",
        "100400",     "100405",     "100500", "100503",     "101400", "101402", "10140102",
        "1014010000", "1014010009", "1D7200", "1D7203",     "1D7230", "1D7233"}) {
    const Bytes start = hex(bytes);
    EXPECT_FALSE(measureCommand(start).known) << bytes;
    EXPECT_TRUE(measureCommand(std::span(start).first(start.size() - 1)).known) << bytes;
  }
}

TEST(BitImage, CountsItsColumnsInSixteenBitsLowByteFirst) {
  EXPECT_EQ(measureCommand(hex("1B2A018001")).length, 5u + 384u);
  EXPECT_EQ(measureCommand(hex("1B2A01FFFF")).length, 5u + 65535u);
  EXPECT_EQ(measureCommand(hex("1B2A000000")).length, 5u);
}

TEST(BitImage, HasColumnsTwoDotsWideInSingleDensity) {
  EXPECT_EQ(columnWidthDots(commandOf(hex("1B2A000000"))), 2u);
  EXPECT_EQ(columnWidthDots(commandOf(hex("1B2A010000"))), 1u);
}

TEST(Listing, ShowsOffsetsBytesAndMeaning) {
  Command feed = commandOf(hex("1B4A10"));
  feed.offset = 1000;
  EXPECT_EQ(listingLine(feed),
            "      1000      3E8  1B 4A 10                    print and feed 16 units (8 rows)");
}

TEST(Listing, LeavesOutTheColumnsOfABitImage) {
  const Command image = commandOf(hex("1B2A010300 FFFFFF"));
  EXPECT_EQ(listingLine(image),
            "         0        0  1B 2A 01 03 00 ..           "
            "bit image, double density, 3 columns, 24 dots");
}

TEST(Listing, ShowsTheFirstEightBytesOfARun) {
  const Command run{CommandKind::kNul, 0, 64, Bytes(16, 0)};
  EXPECT_EQ(listingLine(run), "         0        0  00 00 00 00 00 00 00 00 ..  64 zero bytes");
}

}  // namespace
}  // namespace wren::escpos
