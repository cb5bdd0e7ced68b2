// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Hostile printer streams: whatever the bytes, the commands cover the stream
// without a gap, the same ones come out of pieces of any size, and the paper
// keeps to its limits.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "escpos/command.h"
#include "escpos/reader.h"

namespace {

// Small limits, so that short inputs reach them.
constexpr escpos::PaperLimits kLimits = {4000, 300, 20'000, 50};

void require(bool holds) {
  if (!holds) std::abort();
}

void checkCoverage(const escpos::Reading& reading, std::size_t size, bool whole) {
  std::uint64_t next = 0;
  for (const escpos::Command& command : reading.commands) {
    require(command.offset == next);
    require(command.length > 0);
    next += command.length;
    require(!escpos::listingLine(command).empty());
  }
  require(next <= size);
  if (whole) require(next == size);
}

void checkPaper(const escpos::Paper& paper) {
  require(paper.lengthUnits <= kLimits.lengthUnits);
  require(paper.widthDots <= kLimits.widthDots);
  require(paper.marks.size() <= kLimits.marks);
  std::vector<std::uint8_t> dots(paper.widthDots);
  std::uint64_t next = 0;
  for (const escpos::Piece& piece : escpos::pieces(paper)) {
    require(piece.rows.first == next && piece.rows.first < piece.rows.end);
    next = piece.rows.end;
    for (std::uint64_t row = piece.rows.first; row < piece.rows.end; ++row) {
      escpos::renderRow(paper, row, dots);
    }
  }
  require(next == paper.allRows().end);
}

// Feeds pieces whose sizes the input itself decides.
void checkPieces(std::span<const std::uint8_t> bytes, const escpos::Reading& whole) {
  std::size_t at = 0;
  escpos::Reader reader(kLimits, [&](const escpos::Command& command) {
    require(at < whole.commands.size());
    const escpos::Command& expected = whole.commands[at++];
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  const escpos::Reading reading = escpos::readAll(bytes, kLimits);
  escpos::VirtualPrinter whole(kLimits);
  for (const escpos::Command& command : reading.commands) whole.execute(command);
  checkCoverage(reading, size, !whole.stopped());
  checkPaper(reading.paper);
  checkPieces(bytes, reading);
  return 0;
}
