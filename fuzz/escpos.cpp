// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Arbitrary printer streams. The commands must cover the stream without gaps and
// must not depend on the sizes of the pieces; the paper must stay within its limits.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "escpos/command.h"
#include "escpos/reader.h"

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

void checkStream(std::span<const std::uint8_t> bytes) {
  const Reading reading = readAll(bytes, kLimits);
  VirtualPrinter printer(kLimits);
  for (const Command& command : reading.commands) printer.execute(command);
  checkCoverage(reading, bytes.size(), !printer.stopped());
  checkPaper(reading.paper);
  checkPieces(bytes, reading);
}

}  // namespace
}  // namespace wren::escpos

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  wren::escpos::checkStream({data, size});
  return 0;
}
