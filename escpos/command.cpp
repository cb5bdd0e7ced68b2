// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/command.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cinttypes>
#include <cstdio>

#include "escpos/counted.h"

namespace wren::escpos {
namespace {

constexpr std::uint8_t kNulByte = 0x00;
constexpr std::uint8_t kEot = 0x04;
constexpr std::uint8_t kEnq = 0x05;
constexpr std::uint8_t kDle = 0x10;
constexpr std::uint8_t kDc4 = 0x14;
constexpr std::uint8_t kEsc = 0x1B;
constexpr std::uint8_t kGs = 0x1D;
constexpr std::uint8_t kUs = 0x1F;

// The constant part of the buzzer set-up; one parameter byte follows.
constexpr std::array<std::uint8_t, 7> kBuzzerSetupStart = {kUs, kEsc, kUs, 'B', 'e', 'e', 'p'};

// A command of ESC and a letter with a fixed length.
struct FixedCommand {
  std::uint8_t letter;
  std::size_t length;
  CommandKind kind;
};

constexpr std::array<FixedCommand, 7> kFixedCommands = {{
    {'@', 2, CommandKind::kInitialise},
    {'<', 2, CommandKind::kHome},
    {'v', 2, CommandKind::kStatusRequest},
    {'J', 3, CommandKind::kFeed},
    {'U', 3, CommandKind::kDirection},
    {'B', 4, CommandKind::kBeep},
    {'p', 5, CommandKind::kDrawerPulse},
}};

const FixedCommand* findFixedCommand(std::uint8_t letter) {
  const auto found = std::find_if(kFixedCommands.begin(), kFixedCommands.end(),
                                  [&](const FixedCommand& c) { return c.letter == letter; });
  return found == kFixedCommands.end() ? nullptr : &*found;
}

bool isZeroOrOne(std::uint8_t byte) {
  return byte <= 1;
}

Measure measureBitImage(std::span<const std::uint8_t> start) {
  if (start.size() < 3) return {true, 3};
  if (!isZeroOrOne(start[2])) return {};
  if (start.size() < kBitImageHeaderBytes) return {true, kBitImageHeaderBytes};
  const std::size_t columns = start[3] + 256U * start[4];
  return {true, kBitImageHeaderBytes + columns};
}

Measure measureEscape(std::span<const std::uint8_t> start) {
  if (start.size() < 2) return {true, 2};
  if (start[1] == '*') return measureBitImage(start);
  const FixedCommand* fixed = findFixedCommand(start[1]);
  if (fixed == nullptr) return {};
  const bool badConnector =
      fixed->kind == CommandKind::kDrawerPulse && start.size() > 2 && !isZeroOrOne(start[2]);
  return badConnector ? Measure{} : Measure{true, fixed->length};
}

// 1, 2 or their digits.
bool isStatusNumber(std::uint8_t byte) {
  return byte == 1 || byte == 2 || byte == '1' || byte == '2';
}

// GS V m and GS r n.
Measure measureGroupSeparator(std::span<const std::uint8_t> start) {
  if (start.size() > 1 && start[1] != 'V' && start[1] != 'r') return {};
  if (start.size() < 3) return {true, 3};
  const bool isKnown = start[1] == 'V' ? isZeroOrOne(start[2]) : isStatusNumber(start[2]);
  return isKnown ? Measure{true, 3} : Measure{};
}

// DLE DC4 1 m t.
Measure measureRealTimePulse(std::span<const std::uint8_t> start) {
  if (start.size() > 2 && start[2] != 1) return {};
  if (start.size() > 3 && !isZeroOrOne(start[3])) return {};
  if (start.size() > 4 && (start[4] < 1 || start[4] > 8)) return {};
  return {true, 5};
}

Measure measureDataLinkEscape(std::span<const std::uint8_t> start) {
  if (start.size() < 2) return {true, 3};
  if (start[1] == kDc4) return measureRealTimePulse(start);
  if (start[1] != kEot && start[1] != kEnq) return {};
  if (start.size() < 3) return {true, 3};
  const std::uint8_t highest = start[1] == kEot ? 4 : 2;
  return start[2] >= 1 && start[2] <= highest ? Measure{true, 3} : Measure{};
}

Measure measureBuzzerSetup(std::span<const std::uint8_t> start) {
  const std::size_t common = std::min(start.size(), kBuzzerSetupStart.size());
  if (!std::equal(start.begin(), start.begin() + common, kBuzzerSetupStart.begin())) return {};
  return {true, kBuzzerSetupStart.size() + 1};
}

CommandKind kindOfRealTime(std::uint8_t second) {
  if (second == kEot) return CommandKind::kRealTimeStatus;
  return second == kEnq ? CommandKind::kRealTimeRecovery : CommandKind::kRealTimePulse;
}

std::string number(std::uint64_t value) {
  return std::to_string(value);
}

std::string describeBitImage(const Command& command) {
  unsigned dots = 0;
  for (const std::uint8_t column : columnsOf(command)) {
    dots += static_cast<unsigned>(std::popcount(column));
  }
  const std::string density = columnWidthDots(command) == 2 ? "single" : "double";
  return "bit image, " + density + " density, " + counted(columnsOf(command).size(), "column") +
         ", " + counted(dots, "dot");
}

std::string describeFeed(unsigned units) {
  const std::string half = units % 2 == 0 ? "" : " and a half";
  return "print and feed " + counted(units, "unit") + " (" + number(units / 2) + half + " rows)";
}

std::string describeDrawerPulse(std::span<const std::uint8_t> bytes) {
  return "drawer pulse on connector " + number(bytes[2]) + ", " +
         number(std::uint64_t{2} * bytes[3]) + " ms on, " + number(std::uint64_t{2} * bytes[4]) +
         " ms off";
}

std::string describeRealTimeStatus(unsigned n) {
  constexpr std::array<const char*, 4> kAsked = {"the printer", "the cause of off-line",
                                                 "the cause of an error", "the roll paper sensor"};
  return std::string("real-time status of ") + kAsked[n - 1];
}

std::string describeRealTimePulse(std::span<const std::uint8_t> bytes) {
  return "real-time drawer pulse on connector " + number(bytes[3]) + ", " +
         number(std::uint64_t{100} * bytes[4]) + " ms on";
}

std::string describeBuzzerSetup(unsigned value) {
  if (value == 6) return "buzzer off";
  if (value == 8) return "buzzer on";
  return "buzzer set-up " + number(value);
}

std::string hexBytes(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// The bytes of a command in a listing: the header of a bit image, at most 8 of any other.
std::string shownBytes(const Command& command) {
  const std::span<const std::uint8_t> bytes = command.bytes;
  const std::size_t shown = std::min(
      bytes.size(), command.kind == CommandKind::kBitImage ? kBitImageHeaderBytes : std::size_t{8});
  const std::string hex = hexBytes(bytes.first(shown));
  return command.length > shown ? hex + " .." : hex;
}

}  // namespace

Measure measureCommand(std::span<const std::uint8_t> start) {
  if (start.empty()) return {true, 1};
  switch (start[0]) {
    case kNulByte:
      return {true, 1};
    case kDle:
      return measureDataLinkEscape(start);
    case kEsc:
      return measureEscape(start);
    case kGs:
      return measureGroupSeparator(start);
    case kUs:
      return measureBuzzerSetup(start);
    default:
      return {};
  }
}

CommandKind kindOf(std::span<const std::uint8_t> bytes) {
  if (bytes[0] == kNulByte) return CommandKind::kNul;
  if (bytes[0] == kDle) return kindOfRealTime(bytes[1]);
  if (bytes[0] == kGs) return bytes[1] == 'V' ? CommandKind::kCut : CommandKind::kTransmitStatus;
  if (bytes[0] == kUs) return CommandKind::kBuzzerSetup;
  const FixedCommand* fixed = findFixedCommand(bytes[1]);
  return fixed == nullptr ? CommandKind::kBitImage : fixed->kind;
}

bool isRealTime(CommandKind kind) {
  return kind == CommandKind::kRealTimeStatus || kind == CommandKind::kRealTimeRecovery ||
         kind == CommandKind::kRealTimePulse;
}

std::span<const std::uint8_t> columnsOf(const Command& bitImage) {
  return std::span<const std::uint8_t>(bitImage.bytes).subspan(kBitImageHeaderBytes);
}

std::uint32_t columnWidthDots(const Command& bitImage) {
  return bitImage.bytes[2] == 0 ? 2 : 1;
}

std::string describe(const Command& command) {
  const auto& bytes = command.bytes;
  switch (command.kind) {
    case CommandKind::kNul:
      return counted(command.length, "zero byte");
    case CommandKind::kInitialise:
      return "initialise the printer";
    case CommandKind::kHome:
      return "print head home, a page begins";
    case CommandKind::kBitImage:
      return describeBitImage(command);
    case CommandKind::kFeed:
      return describeFeed(bytes[2]);
    case CommandKind::kCut:
      return bytes[2] == 0 ? "full cut" : "partial cut";
    case CommandKind::kDrawerPulse:
      return describeDrawerPulse(bytes);
    case CommandKind::kDirection:
      return (bytes[2] & 1) != 0 ? "unidirectional printing on" : "unidirectional printing off";
    case CommandKind::kBeep:
      return "beep " + counted(bytes[2], "time") + ", on-time " + number(bytes[3]);
    case CommandKind::kBuzzerSetup:
      return describeBuzzerSetup(bytes[7]);
    case CommandKind::kStatusRequest:
      return "ask for the paper status";
    case CommandKind::kRealTimeStatus:
      return describeRealTimeStatus(bytes[2]);
    case CommandKind::kRealTimeRecovery:
      return bytes[2] == 1 ? "real-time recovery" : "real-time recovery, the buffer is cleared";
    case CommandKind::kRealTimePulse:
      return describeRealTimePulse(bytes);
    case CommandKind::kTransmitStatus:
      return (bytes[2] & 1) != 0 ? "ask for the paper status in turn"
                                 : "ask for the drawer status in turn";
    case CommandKind::kUnknown:
      return counted(command.length, "unknown byte");
    case CommandKind::kTruncated:
      return "the stream ends inside a command, after " + counted(command.length, "byte") +
             " of it";
  }
  return {};
}

std::string listingLine(const Command& command) {
  char place[48];
  std::snprintf(place, sizeof place, "%10" PRIu64 " %8" PRIX64 "  ", command.offset,
                command.offset);
  std::string bytes = shownBytes(command);
  bytes.resize(std::max<std::size_t>(bytes.size(), 26), ' ');
  return place + bytes + "  " + describe(command);
}

}  // namespace wren::escpos
