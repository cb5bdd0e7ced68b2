// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/control_commands.h"

#include <array>
#include <cstdint>
#include <span>

namespace wren::job {
namespace {

template <std::size_t N>
constexpr command commandOf(const unsigned char (&bytes)[N]) {
  return {N, bytes};
}

constexpr unsigned char kFeed16Units[] = {0x1B, 0x4A, 0x10};
constexpr unsigned char kBuzzer[] = {0x1B, 0x42};
constexpr unsigned char kFullCut[] = {0x1D, 0x56, 0x00};
constexpr unsigned char kPartialCut[] = {0x1D, 0x56, 0x01};
constexpr unsigned char kInitialize[] = {0x1B, 0x40};
constexpr unsigned char kBuzzerUnused[] = {0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06};
constexpr unsigned char kBuzzerInUse[] = {0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x08};
constexpr unsigned char kBothDirections[] = {0x1B, 0x55, 0x00};
constexpr unsigned char kOneDirection[] = {0x1B, 0x55, 0x01};
constexpr unsigned char kEndOfJob[] = {0x1B, 0x76};
// 1B 70 0 on-time off-time, in units of 2 ms: 100 ms to 500 ms in steps of 50 ms.
constexpr unsigned char kDrawerPulses[9][5] = {
    {0x1B, 0x70, 0x00, 0x32, 0x32},  //
    {0x1B, 0x70, 0x00, 0x4B, 0x32},  //
    {0x1B, 0x70, 0x00, 0x64, 0x32},  //
    {0x1B, 0x70, 0x00, 0x7D, 0x32},  //
    {0x1B, 0x70, 0x00, 0x96, 0x32},  //
    {0x1B, 0x70, 0x00, 0xAF, 0x32},  //
    {0x1B, 0x70, 0x00, 0xC8, 0x32},  //
    {0x1B, 0x70, 0x00, 0xE1, 0x32},  //
    {0x1B, 0x70, 0x00, 0xFA, 0x32},  //
};

constexpr std::array<command, 1> startPageCommand = {{{}}};
constexpr std::array<command, 1> endPageCommand = {{commandOf(kFeed16Units)}};
constexpr std::array<command, 1> buzzer1OnTimeCommand = {{commandOf(kBuzzer)}};
constexpr std::array<command, 4> pageCutTypeCommand = {
    {{}, commandOf(kFullCut), commandOf(kPartialCut), {}}};
constexpr std::array<command, 1> printerInitializeCommand = {{commandOf(kInitialize)}};
constexpr std::array<command, 2> buzzerOnOffTimeCommand = {
    {commandOf(kBuzzerUnused), commandOf(kBuzzerInUse)}};
constexpr std::array<command, 2> bidiPrintingCommand = {
    {commandOf(kBothDirections), commandOf(kOneDirection)}};
constexpr std::array<command, 9> cashDrawerPulseWidthCommand = {{
    commandOf(kDrawerPulses[0]),
    commandOf(kDrawerPulses[1]),
    commandOf(kDrawerPulses[2]),
    commandOf(kDrawerPulses[3]),
    commandOf(kDrawerPulses[4]),
    commandOf(kDrawerPulses[5]),
    commandOf(kDrawerPulses[6]),
    commandOf(kDrawerPulses[7]),
    commandOf(kDrawerPulses[8]),
}};
constexpr std::array<command, 4> docCutTypeCommand = {
    {{}, commandOf(kFullCut), commandOf(kPartialCut), {}}};

// An index outside the table writes nothing and gives false.
bool writeFrom(FILE* out, std::span<const command> table, std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= table.size()) return false;
  writeCommand(out, table[static_cast<std::size_t>(index)]);
  return true;
}

// A value above 9 becomes 1, not 9: printed output depends on it.
std::int32_t buzzerParameter(std::int32_t value) {
  return value > 9 ? 1 : value;
}

// The repeat count comes before the on-time; both buzzers use the same command.
void writeBuzzer(FILE* out, std::int32_t onTime, std::int32_t repeat) {
  writeFrom(out, buzzer1OnTimeCommand, 0);
  std::putc(buzzerParameter(repeat), out);
  std::putc(buzzerParameter(onTime), out);
}

void writeBuzzer1(FILE* out, const Settings& s) {
  writeBuzzer(out, s.buzzer1OnTime, s.buzzer1Repeat);
}

void writeBuzzer2(FILE* out, const Settings& s) {
  writeBuzzer(out, s.buzzer2OnTime, s.buzzer2Repeat);
}

// `units` are half dot rows.
void writeFeedStep(FILE* out, std::uint32_t units) {
  std::putc(0x1B, out);
  std::putc(0x4A, out);
  std::putc(static_cast<int>(units), out);
}

std::uint32_t unitsBeforeCut(const Settings& s) {
  return static_cast<std::uint32_t>(s.feedCutAfterJobEnd) * kFeedUnitsPerMm & 0xFFU;
}

void writeBuzzerReset(FILE* out) {
  writeFrom(out, buzzerOnOffTimeCommand, 0);
  writeCommand(out, commandOf(kEndOfJob));
}

}  // namespace

void writeCommand(FILE* out, const command& cmd) {
  const auto count = static_cast<std::int32_t>(cmd.length);
  for (std::int32_t i = 0; i < count; ++i) std::putc(cmd.bytes[i], out);
}

void writeInitialise(FILE* out) {
  writeFrom(out, printerInitializeCommand, 0);
}

void writeDirection(FILE* out, const Settings& s) {
  writeFrom(out, bidiPrintingCommand, s.bidiPrinting);
}

bool writeDrawer(FILE* out, const Settings& s) {
  return writeFrom(out, cashDrawerPulseWidthCommand, s.cashDrawerPulseWidth);
}

void writeBeep(FILE* out, std::int32_t onTime, std::int32_t repeat) {
  writeFrom(out, buzzerOnOffTimeCommand, 1);
  writeBuzzer(out, onTime, repeat);
  writeFrom(out, buzzerOnOffTimeCommand, 0);
}

void writeFeed(FILE* out, std::uint32_t units) {
  constexpr std::uint32_t kMostUnits = 255;
  for (; units > kMostUnits; units -= kMostUnits) writeFeedStep(out, kMostUnits);
  if (units > 0) writeFeedStep(out, units);
}

bool writeFeedAndCut(FILE* out, const Settings& s, std::int32_t cutType) {
  if (cutType != kFullCutType && cutType != kPartialCutType) return false;
  if (s.feedCutAfterJobEnd > 0) writeFeed(out, unitsBeforeCut(s));
  return writeFrom(out, docCutTypeCommand, cutType);
}

void writeDocumentCut(FILE* out, const Settings& s) {
  if (s.docCutType != 0) writeFeedStep(out, unitsBeforeCut(s));
  writeFrom(out, docCutTypeCommand, s.docCutType);
}

void writePageFeed(FILE* out) {
  writeFrom(out, endPageCommand, 0);
}

void writeJobSetup(FILE* out, const Settings& s) {
  const bool buzzerInUse = s.buzzer2Setting != 0 || s.buzzer1Setting != 0;
  writeInitialise(out);
  writeFrom(out, buzzerOnOffTimeCommand, buzzerInUse ? 1 : 0);
  writeDirection(out, s);
  if (s.buzzer2Setting == 1) writeBuzzer2(out, s);
  if (s.cashDrawerSetting == 1) writeDrawer(out, s);
}

void writePageSetup(FILE* out, const Settings& s) {
  if (s.buzzer1Setting == 1) writeBuzzer1(out, s);
  writeFrom(out, startPageCommand, 0);
}

void writePageEnd(FILE* out, const Settings& s) {
  writePageFeed(out);
  if (s.buzzer1Setting == 2) writeBuzzer1(out, s);
  writeFrom(out, pageCutTypeCommand, s.pageCutType);
}

void writeJobEnd(FILE* out, const Settings& s) {
  writeDocumentCut(out, s);
  if (s.buzzer2Setting == 2) writeBuzzer2(out, s);
  if (s.cashDrawerSetting == 2) writeDrawer(out, s);
  writeBuzzerReset(out);
}

void writeCancelledJobEnd(FILE* out, const Settings& s) {
  writePageFeed(out);
  writeDocumentCut(out, s);
  writeBuzzerReset(out);
}

}  // namespace wren::job
