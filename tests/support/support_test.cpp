// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Tests of the test support against independent references: the raster reader of the
// CUPS library, hand-written bytes, a shell.

#include <cups/raster.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>

#include "tests/support/bmp_file.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/process.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

ProcessSpec shell(const std::string& script) {
  ProcessSpec spec;
  spec.program = "/bin/sh";
  spec.arguments = {"sh", "-c", script};
  return spec;
}

TEST(Process, CollectsOutputsAndStatus) {
  const auto result = runProcess(shell("cat; echo oops >&2; exit 3"), "fed");
  EXPECT_EQ(result.out, "fed");
  EXPECT_EQ(result.err, "oops\n");
  EXPECT_TRUE(result.exited(3));
  EXPECT_EQ(result.signal, 0);
}

TEST(Process, ReportsSignalsAndTimeouts) {
  EXPECT_EQ(runProcess(shell("kill -TERM $$")).signal, SIGTERM);
  auto slow = shell("exec sleep 30");
  slow.timeoutSeconds = 0.05;
  EXPECT_TRUE(runProcess(slow).timedOut);
}

// All pages of a stream, read by the CUPS library.
std::vector<RasterPage> readWithCups(const std::string& stream) {
  FILE* file = std::tmpfile();
  std::fwrite(stream.data(), 1, stream.size(), file);
  std::fflush(file);
  std::rewind(file);
  cups_raster_t* raster = cupsRasterOpen(fileno(file), CUPS_RASTER_READ);
  std::vector<RasterPage> pages;
  for (RasterPage page; cupsRasterReadHeader2(raster, &page.header) != 0; pages.push_back(page)) {
    const unsigned size = page.header.cupsHeight * page.header.cupsBytesPerLine;
    page.pixels.assign(size, '\0');
    EXPECT_NE(
        cupsRasterReadPixels(raster, reinterpret_cast<unsigned char*>(page.pixels.data()), size),
        0U);
  }
  cupsRasterClose(raster);
  std::fclose(file);
  return pages;
}

TEST(RasterStream, EveryKindIsReadByTheCupsLibrary) {
  const std::vector<RasterPage> pages = {noisePage(17, 9, 1), flatPage(300, 5, 7, 100),
                                         greyPage({"aab", "aab", "abc"})};
  for (const auto kind :
       {RasterKind::kV2, RasterKind::kV3, RasterKind::kV3Swapped, RasterKind::kPwg}) {
    const auto read = readWithCups(rasterStream(kind, pages));
    ASSERT_EQ(read.size(), pages.size()) << static_cast<int>(kind);
    for (std::size_t i = 0; i < pages.size(); ++i) {
      EXPECT_EQ(read[i].pixels, pages[i].pixels) << static_cast<int>(kind);
      EXPECT_EQ(read[i].header.HWResolution[0], pages[i].header.HWResolution[0]);
      EXPECT_EQ(read[i].header.cupsBitsPerPixel, 8U);
    }
  }
}

TEST(PrinterBytes, EveryByteIsPartOfACommand) {
  const std::string bytes = fromHex(
      "0000 1B40 1F1B1F4265657008 1B5501 1B420301 1B70004B32 1B3C 1B2A01020080FF 1B4A04"
      "1D5600 1B76 41 1B2A01FFFF00");
  std::string again;
  std::vector<std::string> names;
  for (const auto& command : decodePrinterBytes(bytes)) {
    again += command.bytes;
    names.push_back(command.name);
  }
  EXPECT_EQ(again, bytes);
  EXPECT_EQ(names, (std::vector<std::string>{"zeros", "initialize", "buzzer set-up", "direction",
                                             "buzzer", "drawer", "page start", "columns", "feed",
                                             "cut", "job end", "unknown", "unknown", "unknown",
                                             "unknown", "unknown", "unknown", "zeros"}));
}

TEST(PrinterBytes, ColumnsBecomeRowsOfDots) {
  const auto pages = printedPages(fromHex("1B3C 1B2A00030080C001 1B4A10 1B2A000300FF0080 1B4A02"));
  ASSERT_EQ(pages.size(), 1U);
  EXPECT_EQ(pages[0].rows, (std::vector<std::string>{"##.", ".#.", "...", "...", "...", "...",
                                                     "...", "..#", "#.#"}));
}

TEST(SameBytes, ShowsTheFirstDifference) {
  using Bytes = std::vector<std::uint8_t>;
  const struct {
    Bytes expected;
    Bytes got;
    const char* message;
  } rows[] = {
      {{1, 2}, {1, 2}, ""},
      {{1, 2}, {1, 0x2A, 3},
       "first difference at byte 1 (row 0, column 1) of 2 expected and 3 got\n"
       "expected: 01 [02]\n     got: 01 [2a] 03"},
      {{7}, {}, "first difference at byte 0 (row 0, column 0) of 1 expected and 0 got\n"
                "expected: [07]\n     got:"},
      {Bytes(18, 7), {7, 7, 7, 7, 7, 7, 8},
       "first difference at byte 6 (row 3, column 0) of 18 expected and 7 got\n"
       "expected: 07 07 07 07 [07] 07 07 07 07 07 07 07 07 07 07 07\n"
       "     got: 07 07 07 07 [08]"},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(sameBytes(row.expected, row.got, 2).message(), row.message);
  }
}

TEST(SameBytes, MatchesEqualBytesOnly) {
  const std::vector<std::uint8_t> bytes = {1, 2};
  EXPECT_THAT(bytes, SameBytes(std::vector<std::uint8_t>{1, 2}));
  EXPECT_THAT(bytes, testing::Not(SameBytes(std::vector<std::uint8_t>{1, 3})));
}

TEST(BmpFile, ReadsHandWrittenBytes) {
  const auto file = readBmp(
      fromHex("424D 46000000 0000 0000 3E000000 28000000 0A000000 02000000 0100 0100 00000000 "
              "08000000 00000000 00000000 00000000 00000000 00000000FFFFFF00 FFFF0000 003F0000"));
  ASSERT_TRUE(file.complete);
  EXPECT_EQ(file.fileSize, 70U);
  EXPECT_EQ(file.width, 10);
  EXPECT_EQ(file.height, 2);
  EXPECT_EQ(file.bitsPerPixel, 1U);
  EXPECT_EQ(hexOf(file.palette), "00 00 00 00 FF FF FF 00");
  EXPECT_EQ(hexOf(file.pixels), "FF FF 00 00 00 3F 00 00");
}

TEST(FilterJob, LeavesNothingInTheRealSpoolFolder) {
  const auto before = savedImages(kRealSpoolFolder).size();
  FilterJob job;
  job.ppd = fullPpd().text();
  job.raster = rasterStream(RasterKind::kV3, {flatPage(8, 8, 255)});
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0)) << result.err;
  EXPECT_EQ(savedImages(kRealSpoolFolder).size(), before);
}

TEST(FilterJob, RunsTheRealFilterWhereMountingIsAllowed) {
  if (!canMount()) GTEST_SKIP() << "mounting is not allowed; the tests run the relocated filter";
  EXPECT_EQ(std::filesystem::path(filterProgram()).filename(), "rastertowren");
}

}  // namespace
}  // namespace wren_test
