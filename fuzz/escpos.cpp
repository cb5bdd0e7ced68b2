// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Arbitrary printer streams, or streams of commands (`kFieldsMark`). The commands must cover the
// stream without gaps and must not depend on the sizes of the pieces; those that were written must
// be found; the paper must stay within its limits.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "escpos/command.h"
#include "escpos/reader.h"
#include "fuzz/input.h"
#include "fuzz/printer_commands.h"

namespace wren::escpos {
namespace {

// Small, so that short inputs reach the limits.
constexpr PaperLimits kLimits = {4000, 300, 20'000, 50};

void require(bool holds) {
  if (!holds) std::abort();
}

void checkCoverage(const Reading& reading, std::size_t size, bool whole) {
  std::uint64_t next = 0;
  for (const Command& command : reading.commands) {
    require(command.offset == next);
    require(command.length > 0);
    next += command.length;
    require(!listingLine(command).empty());
  }
  require(next <= size);
  if (whole) require(next == size);
}

void checkPaper(const Paper& paper) {
  require(paper.lengthUnits <= kLimits.lengthUnits);
  require(paper.widthDots <= kLimits.widthDots);
  require(paper.marks.size() <= kLimits.marks);
  std::vector<std::uint8_t> dots(paper.widthDots);
  std::uint64_t next = 0;
  for (const Piece& piece : pieces(paper)) {
    require(piece.rows.first == next && piece.rows.first < piece.rows.end);
    next = piece.rows.end;
    for (std::uint64_t row = piece.rows.first; row < piece.rows.end; ++row) {
      renderRow(paper, row, dots);
    }
  }
  require(next == paper.allRows().end);
}

// Feeds pieces whose sizes depend on the input.
void checkPieces(std::span<const std::uint8_t> bytes, const Reading& whole) {
  std::size_t at = 0;
  Reader reader(kLimits, [&](const Command& command) {
    require(at < whole.commands.size());
    const Command& expected = whole.commands[at++];
    require(command.kind == expected.kind && command.offset == expected.offset);
    require(command.bytes == expected.bytes);
  });
  while (!bytes.empty()) {
    const std::size_t size = std::min<std::size_t>(bytes.size(), 1U + bytes[0] % 13U);
    reader.feed(bytes.first(size));
    bytes = bytes.subspan(size);
  }
  reader.finish();
  require(at == whole.commands.size());
  require(reader.printer().paper().lengthUnits == whole.paper.lengthUnits);
}

Reading checkStream(std::span<const std::uint8_t> bytes) {
  Reading reading = readAll(bytes, kLimits);
  VirtualPrinter printer(kLimits);
  for (const Command& command : reading.commands) printer.execute(command);
  checkCoverage(reading, bytes.size(), !printer.stopped());
  checkPaper(reading.paper);
  checkPieces(bytes, reading);
  return reading;
}

// The commands that were written are those that are read, up to where the printer stops.
void checkCommands(const fuzz::PrinterCommands& written, const Reading& reading) {
  using enum CommandKind;
  std::vector<fuzz::PrinterCommands::Place> read;
  std::uint64_t end = 0;
  for (const Command& command : reading.commands) {
    end = command.offset + command.length;
    if (command.kind == kNul || command.kind == kUnknown || command.kind == kTruncated) continue;
    read.push_back({command.kind, command.offset, command.length});
  }
  const bool isWhole = end == written.bytes.size();
  const std::size_t expected =
      isWhole ? written.commands.size() : std::min(written.commands.size(), read.size());
  fuzz::check(read.size() >= expected, "each command is found");
  fuzz::check(written.isSpoilt || read.size() == expected, "no other command is found");
  for (std::size_t i = 0; i < expected; ++i) {
    fuzz::check(read[i].kind == written.commands[i].kind, "a command has its kind");
    fuzz::check(read[i].offset == written.commands[i].offset, "a command is where it was written");
    fuzz::check(read[i].length == written.commands[i].length, "a command has its length");
  }
}

}  // namespace
}  // namespace wren::escpos

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  if (!input.takeFieldsMark()) {
    wren::escpos::checkStream({data, size});
    return 0;
  }
  const fuzz::PrinterCommands written = fuzz::printerCommandsFrom(input, SIZE_MAX);
  wren::escpos::checkCommands(written, wren::escpos::checkStream(written.bytes));
  return 0;
}
