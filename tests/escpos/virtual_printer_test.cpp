// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/virtual_printer.h"

#include <gtest/gtest.h>

#include "escpos/reader.h"
#include "tests/escpos/printer_streams.h"

namespace wren::escpos {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::repeat;
using streams::operator+;

// One line of text per raster row.
std::string drawn(const Paper& paper) {
  std::string text;
  std::vector<std::uint8_t> dots(paper.widthDots);
  for (std::uint64_t row = 0; row < paper.allRows().end; ++row) {
    renderRow(paper, row, dots);
    for (const std::uint8_t dot : dots) text += dot != 0 ? '#' : '.';
    text += '\n';
  }
  return text;
}

std::string problemsOf(const Reading& reading) {
  std::string text;
  for (const auto& problem : reading.problems) {
    text += std::to_string(problem.offset) + ": " + problem.text + "; ";
  }
  return text;
}

TEST(VirtualPrinter, PrintsThirteenRowsInTwoBands) {
  const Bytes page = hex("1B3C") + bitImage(1, hex("FF 80 01")) + feed(16) +
                     bitImage(1, hex("08 F8 80")) + feed(10);
  const Reading reading = readAll(page);
  EXPECT_EQ(drawn(reading.paper),
            "##.\n#..\n#..\n#..\n#..\n#..\n#..\n#.#\n"
            ".##\n.#.\n.#.\n.#.\n##.\n");
  EXPECT_EQ(reading.paper.lengthUnits, 26u);
  EXPECT_EQ(problemsOf(reading), "");
}

TEST(VirtualPrinter, FeedsTwoUnitsPerRow) {
  EXPECT_EQ(readAll(hex("1B4A10")).paper.allRows().end, 8u);
}

TEST(VirtualPrinter, DrawsAColumnOfSingleDensityTwiceAsWide) {
  EXPECT_EQ(drawn(readAll(bitImage(0, hex("80 40 80")) + feed(4)).paper), "##..##\n..##..\n");
  EXPECT_EQ(drawn(readAll(bitImage(1, hex("80 40 80")) + feed(4)).paper), "#.#\n.#.\n");
}

TEST(VirtualPrinter, PlacesBitImagesOfOneLineSideBySide) {
  EXPECT_EQ(drawn(readAll(bitImage(1, hex("8080")) + bitImage(0, hex("40")) + feed(4)).paper),
            "##..\n..##\n");
}

TEST(VirtualPrinter, PrintsOverALineThatWasNotFed) {
  const Bytes stream = bitImage(1, hex("80")) + feed(0) + bitImage(1, hex("0080")) + feed(2);
  EXPECT_EQ(drawn(readAll(stream).paper), "##\n");
}

// 200 lines of one dot each, at columns 0, 2, 4 and 6 in turn; the last is of single density.
TEST(VirtualPrinter, MergesManyLinesThatWereNotFed) {
  Bytes stream;
  for (int i = 0; i < 200; ++i) {
    Bytes columns = repeat(7, 0);
    columns[static_cast<std::size_t>(i % 4) * 2] = 0x80;
    stream = stream + bitImage(1, columns) + feed(0);
  }
  const Reading reading = readAll(feed(2) + stream + bitImage(0, hex("0080")) + feed(2) +
                                  bitImage(1, hex("80")) + feed(2));
  EXPECT_EQ(drawn(reading.paper), ".......\n#.###.#\n#......\n");
  EXPECT_LE(reading.paper.stripes.size(), VirtualPrinter::kMaxStripesAtOnePlace + 1);
}

// Each round of merged lines costs no more than one stripe.
TEST(VirtualPrinter, StoresManyLinesAtOnePlaceInLittleMemory) {
  PaperLimits limits;
  limits.storedBytes = 100'000;
  Bytes stream;
  for (int i = 0; i < 1000; ++i) stream = stream + bitImage(1, repeat(300, 0xFF)) + feed(0);
  const Reading reading = readAll(stream + feed(2), limits);
  EXPECT_EQ(problemsOf(reading), "");
  EXPECT_EQ(drawn(reading.paper).substr(0, 301), std::string(300, '#') + "\n");
}

TEST(VirtualPrinter, ShowsTheDotsBelowATooShortFeed) {
  EXPECT_EQ(drawn(readAll(bitImage(1, hex("90")) + feed(2)).paper), "#\n.\n.\n#\n");
  EXPECT_EQ(drawn(readAll(bitImage(1, hex("01")) + feed(2)).paper), ".\n.\n.\n.\n.\n.\n.\n#\n");
}

TEST(VirtualPrinter, CountsAHalfRowAtTheEndAsARow) {
  EXPECT_EQ(readAll(feed(3)).paper.lengthUnits, 3u);
  EXPECT_EQ(readAll(feed(3)).paper.allRows().end, 2u);
}

std::string marksOf(const Paper& paper) {
  std::string text;
  for (const Mark& mark : paper.marks) {
    constexpr const char* kNames[] = {"page", "full cut", "partial cut", "pulse", "beep"};
    text += std::to_string(mark.atUnits) + ": " + kNames[static_cast<std::size_t>(mark.kind)] +
            " " + std::to_string(mark.first) + " " + std::to_string(mark.second) + " from " +
            std::to_string(mark.offset) + "\n";
  }
  return text;
}

TEST(VirtualPrinter, RecordsPagesCutsPulsesAndBeepsWithTheirPosition) {
  const Bytes stream = hex("1B42 0301") + hex("1B3C") + feed(16) + hex("1D5601") + feed(48) +
                       hex("1D5600") + hex("1B70009632") + hex("1B420205");
  const Reading reading = readAll(stream);
  EXPECT_EQ(marksOf(reading.paper),
            "0: beep 3 1 from 0\n"
            "0: page 0 0 from 4\n"
            "16: partial cut 0 0 from 9\n"
            "64: full cut 0 0 from 15\n"
            "64: pulse 0 300 from 18\n"
            "64: beep 2 5 from 23\n");
  EXPECT_EQ(reading.totals.pages, 1u);
  EXPECT_EQ(reading.totals.cuts, 2u);
  EXPECT_EQ(reading.totals.drawerPulses, 1u);
  EXPECT_EQ(reading.totals.beeps, 5u);
  EXPECT_EQ(reading.totals.problems, 0u);
}

TEST(VirtualPrinter, ReportsUnknownAndMissingBytesAndPrintsTheRest) {
  const Reading reading =
      readAll(feed(2) + hex("414243") + bitImage(1, hex("80")) + feed(2) + hex("1B2A01"));
  EXPECT_EQ(problemsOf(reading),
            "3: 3 unknown bytes; 15: the stream ends inside a command, after 3 bytes of it; ");
  EXPECT_EQ(drawn(reading.paper), ".\n#\n");
}

TEST(VirtualPrinter, ReportsDotsThatAreNeverPrinted) {
  EXPECT_EQ(problemsOf(readAll(feed(2) + bitImage(1, hex("80")))),
            "3: dots that were not printed before the end of the stream; ");
  EXPECT_EQ(problemsOf(readAll(bitImage(1, hex("80")) + hex("1B40") + feed(2))),
            "0: dots that were not printed before an initialisation; ");
  EXPECT_EQ(problemsOf(readAll(bitImage(1, {}))), "");
}

TEST(VirtualPrinter, ClipsLinesThatAreTooWide) {
  PaperLimits limits;
  limits.widthDots = 3;
  const Bytes line = bitImage(1, hex("80 80")) + bitImage(0, hex("80 80")) + bitImage(1, hex("80"));
  const Reading reading = readAll(line + feed(2) + bitImage(1, hex("40")) + feed(4), limits);
  EXPECT_EQ(drawn(reading.paper), "##\n..\n#.\n");
  EXPECT_EQ(problemsOf(reading), "7: a line is wider than 3 dots, the rest is lost; ");
}

TEST(VirtualPrinter, StopsAtTheLimitOfLength) {
  PaperLimits limits;
  limits.lengthUnits = 40;
  const Bytes line = bitImage(1, hex("FF")) + feed(16);
  const Reading reading = readAll(line + line + line + hex("1B3C"), limits);
  EXPECT_EQ(reading.paper.lengthUnits, 32u);
  EXPECT_EQ(reading.paper.stripes.size(), 2u);
  EXPECT_EQ(problemsOf(reading), "24: the paper limit is reached, printing stops here; ");
  EXPECT_EQ(reading.totals.pages, 0u);
}

TEST(VirtualPrinter, UsesThePaperUpToItsLastUnit) {
  PaperLimits limits;
  limits.lengthUnits = 32;
  const Bytes line = bitImage(1, hex("FF")) + feed(16);
  EXPECT_EQ(problemsOf(readAll(line + line, limits)), "");
  EXPECT_NE(problemsOf(readAll(line + line + feed(1), limits)), "");
}

TEST(VirtualPrinter, StopsAtTheLimitOfStoredBytes) {
  PaperLimits limits;
  limits.storedBytes = 1000;
  const Bytes line = bitImage(1, repeat(300, 0xFF)) + feed(0);
  const Reading reading = readAll(line + line + line + line, limits);
  EXPECT_EQ(reading.paper.stripes.size(), 2u);
  EXPECT_EQ(problemsOf(reading), "616: more dots than can be kept, printing stops here; ");
}

// A line of 300 columns fits the limit once. Lines that are lost must not count.
TEST(VirtualPrinter, GivesTheBytesOfALostLineBack) {
  PaperLimits limits;
  limits.storedBytes = 600;
  const Bytes line = bitImage(1, repeat(300, 0xFF));
  Bytes stream;
  for (int i = 0; i < 5; ++i) stream = stream + line + hex("1B40");
  const Reading reading = readAll(stream + line + feed(16), limits);
  EXPECT_EQ(reading.paper.stripes.size(), 1u);
  EXPECT_EQ(reading.totals.problems, 5u);
}

TEST(VirtualPrinter, MarksARealTimePulseInUnitsOf100Milliseconds) {
  const Reading reading = readAll(feed(16) + hex("1014010103"));
  EXPECT_EQ(marksOf(reading.paper), "16: pulse 1 300 from 3\n");
  EXPECT_EQ(reading.totals.drawerPulses, 1u);
}

TEST(VirtualPrinter, LosesItsLineByARecoveryThatClearsTheBuffer) {
  const Bytes line = bitImage(1, hex("80"));
  const Reading cleared = readAll(line + hex("100502") + feed(2));
  EXPECT_EQ(problemsOf(cleared),
            "0: dots that were not printed before a recovery that clears the buffer; ");
  EXPECT_EQ(cleared.paper.stripes.size(), 0u);
  EXPECT_EQ(drawn(readAll(line + hex("100501") + feed(2)).paper), "#\n");
}

TEST(VirtualPrinter, PrintsNothingForARequestOfStatus) {
  const Reading reading = readAll(hex("100401 100402 100403 100404 1D7201 1D7202"));
  EXPECT_EQ(reading.totals.commands, 6u);
  EXPECT_EQ(problemsOf(reading), "");
  EXPECT_EQ(reading.paper.lengthUnits, 0u);
  EXPECT_EQ(reading.paper.marks.size(), 0u);
}

TEST(VirtualPrinter, StopsAtTheLimitOfMarks) {
  PaperLimits limits;
  limits.marks = 2;
  EXPECT_EQ(problemsOf(readAll(hex("1B3C 1D5600 1B3C 1D5600"), limits)),
            "5: more than 2 pages, cuts, pulses and beeps, printing stops here; ");
}

TEST(VirtualPrinter, KeepsTheFirstProblemsAndCountsTheOthers) {
  Bytes stream;
  for (int i = 0; i < 250; ++i) stream = stream + hex("41 1B40");
  const Reading reading = readAll(stream);
  EXPECT_EQ(reading.problems.size(), VirtualPrinter::kKeptProblems);
  EXPECT_EQ(reading.totals.problems, 250u);
}

}  // namespace
}  // namespace wren::escpos
