// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer application behind a queue that the scheduler makes by itself
// (lpadmin -m everywhere): another program prints to it and knows nothing of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/app/filter_of_pages.h"
#include "tests/app/running_app.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/process.h"
#include "tests/support/same_bytes.h"
#include "tests/support/temporary_folder.h"

namespace {

using wren_test::SameBytes;
using wren_test::TemporaryFolder;

constexpr std::size_t kHeadWidthPx = 576;

// What is compared of two papers that were drawn by different renderers.
struct Paper {
  double lengthMm = 0;
  double blackShare = 0;  // of the dots of the head, in percent
  std::uint64_t cuts = 0;
};

wren::escpos::Reading readingOf(const std::string& bytes) {
  auto reading =
      wren::escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  EXPECT_TRUE(reading.problems.empty());
  return reading;
}

// One byte per dot, 1 is black: the rows of the head, whole paper.
std::vector<std::uint8_t> dotsOf(const wren::escpos::Reading& reading) {
  const wren::escpos::RowRange rows = reading.paper.allRows();
  std::vector<std::uint8_t> dots;
  std::vector<std::uint8_t> row(kHeadWidthPx);
  for (std::uint64_t y = rows.first; y < rows.end; ++y) {
    renderRow(reading.paper, y, row);
    dots.insert(dots.end(), row.begin(), row.end());
  }
  return dots;
}

Paper paperOf(const std::string& bytes) {
  const auto reading = readingOf(bytes);
  const std::vector<std::uint8_t> dots = dotsOf(reading);
  const auto black = static_cast<double>(std::count(dots.begin(), dots.end(), 1));
  const auto length = static_cast<double>(dots.size() / kHeadWidthPx);
  return {.lengthMm = length * 25.4 / 203,
          .blackShare = 100.0 * black / static_cast<double>(dots.size()),
          .cuts = reading.totals.cuts};
}

// What zbarimg reads on the paper, with the quiet zone of unprinted paper around the head.
std::string codesOn(const std::string& bytes) {
  constexpr std::size_t kEdgePx = 32;
  const std::vector<std::uint8_t> dots = dotsOf(readingOf(bytes));
  const TemporaryFolder folder;
  const std::string path = folder.path() / "paper.pgm";
  std::ofstream picture(path, std::ios::binary);
  picture << "P5 " << kHeadWidthPx + 2 * kEdgePx << ' ' << dots.size() / kHeadWidthPx << " 255\n";
  for (std::size_t row = 0; row < dots.size(); row += kHeadWidthPx) {
    std::string line(kHeadWidthPx + 2 * kEdgePx, '\xff');
    for (std::size_t x = 0; x < kHeadWidthPx; ++x) {
      if (dots[row + x] == 1) line[kEdgePx + x] = '\0';
    }
    picture << line;
  }
  picture.close();
  wren_test::ProcessSpec reader;
  reader.program = "/usr/bin/zbarimg";
  reader.arguments = {"zbarimg", "-q", path};
  return wren_test::runProcess(reader).out;
}

class Everywhere : public testing::Test {
 protected:
  void SetUp() override {
    // As for a till: nothing is chosen, and the receipt is cut.
    ASSERT_EQ(run("lpadmin -p " + queue_ + " -E -v " + app_.printerUri() + " -m everywhere"), 0);
    // The scheduler asks the printer in the background; a job before that is aborted, or sent
    // without the attributes that say who chose its finishings.
    ASSERT_TRUE(bench->scheduler.waitForLog("Printer \"" + queue_ + "\" is now available."))
        << bench->scheduler.logTail();
  }
  void TearDown() override { run("lpadmin -x " + queue_); }

  std::string print(const std::string& file, const std::string& options = "") {
    app_.forgetPages();
    const int job = bench->submit(queue_, options, file);
    EXPECT_EQ(bench->waitForEnd(job), IPP_JSTATE_COMPLETED) << bench->scheduler.logTail();
    const auto papers = app_.waitForPapers(++jobs_);
    return papers.size() == jobs_ ? papers.back() : std::string();
  }

  std::string wrenPrint(const std::string& file) {
    const TemporaryFolder folder;
    const std::string out = folder.path() / "paper.prn";
    EXPECT_EQ(run(std::string(WREN_PROGRAM) + " print " + bench->scheduler.work() + "/documents/" +
                  file + " --out " + out + " >/dev/null"),
              0);
    return wren_test::readFile(out);
  }

  // A name of its own for each test: on a busy machine a scheduler finds no way to print on a
  // queue that was deleted and added again within a second.
  static std::string newQueue() {
    static int count = 0;
    return "everywhere" + std::to_string(++count);
  }

  std::string queue_ = newQueue();
  wren_test::RunningApp app_;
  std::size_t jobs_ = 0;
};

TEST_F(Everywhere, PrintsTheBytesOfTheFilterAndCuts) {
  for (const char* file : {"receipt.pdf", "photo.png", "order.txt"}) {
    SCOPED_TRACE(file);
    const std::string bytes = print(file);
    EXPECT_THAT(bytes, SameBytes(wren_test::filterBytesOf(app_.pages(), {})));
    EXPECT_EQ(paperOf(bytes).cuts, 1U);
  }
}

TEST_F(Everywhere, PrintsWhatTheCommandPrintPrints) {
  for (const char* file : {"receipt.pdf", "photo.png", "order.txt"}) {
    SCOPED_TRACE(file);
    const Paper paper = paperOf(print(file));
    const Paper expected = paperOf(wrenPrint(file));
    EXPECT_NEAR(paper.lengthMm, expected.lengthMm, 1.0);
    EXPECT_NEAR(paper.blackShare, expected.blackShare, 1.0);
  }
}

TEST_F(Everywhere, PrintsCodesThatAreReadAsThoseOfTheCommandPrint) {
  constexpr const char* kCodes = "QR-Code:https://example.org/r/000042\nCODE-128:WREN-000042\n";
  EXPECT_EQ(codesOn(print("receipt.pdf")), kCodes);
  EXPECT_EQ(codesOn(wrenPrint("receipt.pdf")), kCodes);
}

TEST_F(Everywhere, CutsWhereTheUserAsksForIt) {
  EXPECT_EQ(paperOf(print("receipt.pdf", "-o CutMedia=Auto")).cuts, 1U);
}

}  // namespace
