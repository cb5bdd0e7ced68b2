// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/paper.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/escpos/printer_streams.h"

namespace wren::escpos {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

TEST(Pieces, EndAtCutsAndAtPageStarts) {
  const Bytes page = hex("1B3C") + bitImage(1, hex("FF")) + feed(16) + feed(16);
  const auto ranges = [](const Bytes& stream) {
    std::string text;
    for (const auto& piece : pieces(readAll(stream).paper)) {
      text += std::to_string(piece.rows.first) + "-" + std::to_string(piece.rows.end) + " ";
    }
    return text;
  };
  EXPECT_EQ(ranges(page), "0-16 ");
  EXPECT_EQ(ranges(page + page), "0-16 16-32 ");
  EXPECT_EQ(ranges(page + hex("1D5600") + page + hex("1D5600")), "0-16 16-32 ");
  EXPECT_EQ(ranges(page + feed(16) + hex("1D5601")), "0-24 ");
  EXPECT_EQ(ranges(hex("1D5600") + page + hex("1D5600") + feed(2)), "0-16 16-17 ");
  EXPECT_EQ(ranges({}), "");
}

TEST(Pieces, HaveTheirMarksInStreamOrder) {
  // First piece: beep, page, beep, cut. Second piece: beep, page, cut, and the pulse at the end.
  const Bytes stream = hex("1B420101 1B3C") + feed(16) + hex("1B420202 1D5600 1B420303 1B3C") +
                       feed(16) + hex("1D5600 1B70003232");
  const auto paper = readAll(stream).paper;
  const auto parts = pieces(paper);
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(parts[0].firstMark, 0u);
  EXPECT_EQ(parts[0].endMark, 4u);
  EXPECT_EQ(parts[1].firstMark, 4u);
  EXPECT_EQ(parts[1].endMark, 8u);
  EXPECT_EQ(paper.marks.size(), 8u);
}

TEST(RenderRow, ClipsDotsBeyondTheEndOfTheRow) {
  const Reading reading = readAll(bitImage(0, hex("80 80")) + feed(16));
  std::vector<std::uint8_t> dots(3, 9);
  renderRow(reading.paper, 0, dots);
  EXPECT_EQ(dots, (std::vector<std::uint8_t>{1, 1, 1}));
  renderRow(reading.paper, 1, dots);
  EXPECT_EQ(dots, (std::vector<std::uint8_t>{0, 0, 0}));
  renderRow(reading.paper, 1'000'000, dots);
  EXPECT_EQ(dots, (std::vector<std::uint8_t>{0, 0, 0}));
}

}  // namespace
}  // namespace wren::escpos
