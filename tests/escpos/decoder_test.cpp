// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/decoder.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/escpos/printer_streams.h"

namespace wren::escpos {

// Outside the unnamed namespace, so that GoogleTest finds them by argument-dependent lookup.
static bool operator==(const Command& a, const Command& b) {
  return a.kind == b.kind && a.offset == b.offset && a.length == b.length && a.bytes == b.bytes;
}

static void PrintTo(const Command& command, std::ostream* out) {
  *out << listingLine(command);
}

namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::repeat;
using streams::operator+;

std::vector<Command> decode(const Bytes& bytes, std::size_t pieceSize = SIZE_MAX) {
  std::vector<Command> commands;
  Decoder decoder([&](const Command& command) { commands.push_back(command); });
  std::span<const std::uint8_t> rest = bytes;
  while (!rest.empty()) {
    const std::size_t count = std::min(pieceSize, rest.size());
    decoder.feed(rest.first(count));
    rest = rest.subspan(count);
  }
  decoder.finish();
  EXPECT_EQ(decoder.bytesTaken(), bytes.size());
  return commands;
}

// Offset, length and kind of each command in one line of text.
std::string outline(const std::vector<Command>& commands) {
  std::string text;
  for (const Command& c : commands) {
    text += std::to_string(c.offset) + "+" + std::to_string(c.length) + " " + describe(c) + "; ";
  }
  return text;
}

TEST(Decoder, ReadsAJobOfOnePage) {
  const Bytes page = hex("1B3C") + bitImage(1, hex("FF0080")) + feed(16) + feed(16);
  EXPECT_EQ(outline(decode(streams::job(page))),
            "0+64 64 zero bytes; 64+2 initialise the printer; 66+8 buzzer off; "
            "74+3 unidirectional printing off; 77+2 print head home, a page begins; "
            "79+8 bit image, double density, 3 columns, 9 dots; "
            "87+3 print and feed 16 units (8 rows); 90+3 print and feed 16 units (8 rows); "
            "93+8 buzzer off; 101+2 ask for the paper status; ");
}

TEST(Decoder, DoesNotLookForCommandsAmongColumns) {
  const Bytes columns = hex("1B40 1B76 1D5600");
  const auto commands = decode(bitImage(1, columns) + hex("1B76"));
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].kind, CommandKind::kBitImage);
  EXPECT_EQ(commands[0].bytes, bitImage(1, columns));
  EXPECT_EQ(commands[1].offset, 12u);
  const auto asked = decode(bitImage(1, hex("100402")) + hex("1B70 1004 02") + hex("100402"));
  EXPECT_EQ(outline(asked),
            "0+8 bit image, double density, 3 columns, 3 dots; 8+2 2 unknown bytes; "
            "10+3 real-time status of the cause of off-line; "
            "13+3 real-time status of the cause of off-line; ");
}

struct FaultyStream {
  const char* name;
  const char* bytes;
  const char* outline;
};

constexpr FaultyStream kFaultyStreams[] = {
    {"UnknownBytesEndAtTheNextCommand", "48656C6C6F 1B4A10 0A 1D5600",
     "0+5 5 unknown bytes; 5+3 print and feed 16 units (8 rows); 8+1 1 unknown byte; "
     "9+3 full cut; "},
    {"CommandAfterALoneEscape", "1B 1B40", "0+1 1 unknown byte; 1+2 initialise the printer; "},
    {"CommandAfterTheStartOfACut", "1D 1B40", "0+1 1 unknown byte; 1+2 initialise the printer; "},
    {"CommandInsideAnUnknownBuzzerSetup", "1F1B1F426565 1B40",
     "0+6 6 unknown bytes; 6+2 initialise the printer; "},
    {"CommandInsideTheStartOfABuzzerSetup", "1F 1B40 1B76",
     "0+1 1 unknown byte; 1+2 initialise the printer; 3+2 ask for the paper status; "},
    {"ZeroBytesAfterUnknownOnesBelongToThem", "1B2100 00 1B40 00",
     "0+4 4 unknown bytes; 4+2 initialise the printer; 6+1 1 zero byte; "},
    {"UnknownByteEndsARunOfZeroBytes", "0000 41", "0+2 2 zero bytes; 2+1 1 unknown byte; "},
    {"TruncatedFeed", "1B40 1B4A",
     "0+2 initialise the printer; 2+2 the stream ends inside a command, after 2 bytes of it; "},
    {"TruncatedBitImage", "1B2A01 0A00 FFFF",
     "0+7 the stream ends inside a command, after 7 bytes of it; "},
    {"TruncatedCommandAfterAnUnknownByte", "41 1F",
     "0+1 1 unknown byte; 1+1 the stream ends inside a command, after 1 byte of it; "},
    {"EmptyStream", "", ""},
};

void PrintTo(const FaultyStream& stream, std::ostream* out) {
  *out << stream.bytes;
}

class DecoderOfFaultyStreams : public testing::TestWithParam<FaultyStream> {};

TEST_P(DecoderOfFaultyStreams, Resynchronizes) {
  EXPECT_EQ(outline(decode(hex(GetParam().bytes))), GetParam().outline);
}

INSTANTIATE_TEST_SUITE_P(Streams, DecoderOfFaultyStreams, testing::ValuesIn(kFaultyStreams),
                         [](const auto& stream) { return stream.param.name; });

TEST(Decoder, KeepsOnlyTheFirstBytesOfARun) {
  const auto commands = decode(repeat(1'000'000, 0x41));
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].length, 1'000'000u);
  EXPECT_EQ(commands[0].bytes, repeat(kKeptRunBytes, 0x41));
}

TEST(Decoder, GivesTheSameCommandsForPiecesOfAnySize) {
  std::mt19937 random(7);
  const Bytes alphabet =
      hex("00 1B 1D 1F 40 3C 2A 4A 55 42 70 76 56 65 01 02 06 41 10 04 05 14 72");
  for (int round = 0; round < 200; ++round) {
    Bytes stream;
    for (int i = 0; i < 200; ++i) stream.push_back(alphabet[random() % alphabet.size()]);
    stream = stream + hex("1F1B1F4265657006") + bitImage(1, hex("1B40"));
    const auto whole = decode(stream);
    for (const std::size_t size : {1, 2, 3, 7, 64}) EXPECT_EQ(decode(stream, size), whole);
  }
}

TEST(Decoder, CoversEveryByteExactlyOnce) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    Bytes stream;
    for (int i = 0; i < 300; ++i) stream.push_back(static_cast<std::uint8_t>(random() % 96));
    std::uint64_t next = 0;
    for (const Command& command : decode(stream)) {
      EXPECT_EQ(command.offset, next);
      next += command.length;
    }
    EXPECT_EQ(next, stream.size());
  }
}

}  // namespace
}  // namespace wren::escpos
