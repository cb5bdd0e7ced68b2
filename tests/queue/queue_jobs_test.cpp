// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs that print to their end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren::escpos::MarkKind;
using wren_test::SameBytes;

long count(const Bytes& bytes, MarkKind kind) {
  const auto reading = wren::escpos::readAll(bytes);
  EXPECT_TRUE(reading.problems.empty());
  const auto& marks = reading.paper.marks;
  return std::count_if(marks.begin(), marks.end(),
                       [&](const auto& mark) { return mark.kind == kind; });
}

// The job is complete, and the printer received what direct runs of the filter write.
void expectDelivered(const DeliveredJob& job, std::size_t documents) {
  EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(job.runs.size(), documents);
  Bytes expected;
  for (const auto& run : job.runs)
    expected.insert(expected.end(), run.directBytes.begin(), run.directBytes.end());
  EXPECT_FALSE(expected.empty());
  EXPECT_THAT(job.received, SameBytes(expected));
}

struct Case {
  const char* name;
  const char* queue;
  const char* options;
  const char* files;
  std::size_t documents;
  std::size_t pages;  // this and the following: per document
  long fullCuts;
  long partialCuts;
  long pulses;
  long beeps;
};

void PrintTo(const Case& job, std::ostream* out) {
  *out << job.name;
}

const Case kCases[] = {
    {"receipt on 58 mm", "wren58", "", "receipt-58mm.pdf", 1, 1, 0, 1, 0, 0},
    {"receipt on 80 mm", "wren80", "", "receipt.pdf", 1, 1, 0, 1, 0, 0},
    {"receipt on 112 mm", "wren112", "", "receipt.pdf", 1, 1, 0, 1, 0, 0},
    {"photo", "wren80", "-o HalftoneType=Burkes", "photo.png", 1, 1, 0, 1, 0, 0},
    {"text", "wren80", "", "order.txt", 1, 1, 0, 1, 0, 0},
    {"two pages", "wren80", "-o CashDrawerSetting=1", "two-pages.pdf", 1, 2, 0, 1, 1, 0},
    {"two copies", "wren80", "-n 2 -o CashDrawerSetting=2", "receipt.pdf", 1, 2, 0, 1, 1, 0},
    {"two copies of two pages, cut apart", "wren80", "-n 2 -o PageCutType=1 -o DocCutType=0",
     "two-pages.pdf", 1, 4, 4, 0, 0, 0},
    {"two files", "wren80", "-o CashDrawerSetting=1", "receipt.pdf order.txt", 2, 1, 0, 1, 1, 0},
    {"page group", "wren80", "-o PageType=1 -o PageSize=X80MMY297MM", "receipt.pdf", 1, 1, 0, 1, 0,
     0},
    {"quality group", "wren80", "-o HalftoneType=StevensonArce -o Brightness=-10 -o BidiPrinting=1",
     "receipt.pdf", 1, 1, 0, 1, 0, 0},
    {"stencil", "wren112", "-o HalftoneType=QVDithering", "drawing.png", 1, 1, 0, 1, 0, 0},
    {"cutter group", "wren80", "-o PageCutType=2 -o DocCutType=1 -o FeedCutAfterJobEnd=5",
     "two-pages.pdf", 1, 2, 1, 2, 0, 0},
    {"drawer group", "wren80", "-o CashDrawerSetting=2 -o CashDrawerPulseWidth=4", "receipt.pdf", 1,
     1, 0, 1, 1, 0},
    {"buzzer group", "wren80",
     "-o Buzzer1Setting=2 -o Buzzer1OnTime=3 -o Buzzer1Repeat=2 -o Buzzer2Setting=1"
     " -o Buzzer2OnTime=5 -o Buzzer2Repeat=4",
     "two-pages.pdf", 1, 2, 0, 1, 0, 3},
    {"over-wide custom page", "wren80", "-o PageSize=Custom.100x150mm", "wide.pdf", 1, 1, 0, 1, 0,
     0},
    {"A4 on a roll", "wren80", "", "a4.pdf", 1, 1, 0, 1, 0, 0},
    {"landscape", "wren80", "-o landscape", "wide.pdf", 1, 1, 0, 1, 0, 0},
};

class QueueJob : public testing::TestWithParam<Case> {};

TEST_P(QueueJob, ArrivesAsFromADirectRun) {
  const Case& expected = GetParam();
  const auto job = bench->print(expected.queue, expected.options, expected.files);
  expectDelivered(job, expected.documents);
  const auto documents = static_cast<long>(expected.documents);
  for (const auto& run : job.runs) EXPECT_EQ(run.raster.size(), expected.pages);
  EXPECT_EQ(count(job.received, MarkKind::kPage), static_cast<long>(expected.pages) * documents);
  EXPECT_EQ(count(job.received, MarkKind::kFullCut), expected.fullCuts * documents);
  EXPECT_EQ(count(job.received, MarkKind::kPartialCut), expected.partialCuts * documents);
  EXPECT_EQ(count(job.received, MarkKind::kDrawerPulse), expected.pulses * documents);
  EXPECT_EQ(count(job.received, MarkKind::kBeep), expected.beeps * documents);
}

INSTANTIATE_TEST_SUITE_P(Jobs, QueueJob, testing::ValuesIn(kCases));

std::ptrdiff_t debugImages() {
  const auto folder = std::filesystem::path(bench->scheduler.work()) / "spool/cups/tmp";
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

// Debug images show private receipts.
TEST(Queue, DebugImagesAreSavedOnRequestOnly) {
  const auto before = debugImages();
  expectDelivered(bench->print("wren80", "", "receipt.pdf"), 1);
  EXPECT_EQ(debugImages(), before);
  const auto job = bench->print("wren80", "-o DebugImages=On", "receipt.pdf");
  expectDelivered(job, 1);
  // Two of the job. Those of the direct run may have the same names.
  EXPECT_GE(debugImages(), before + 2);
}

// A banner page is cut and opens the drawer like any other document.
TEST(Queue, ABannerIsASeparateDocument) {
  const auto job =
      bench->print("wren80", "-o job-sheets=standard,none -o CashDrawerSetting=1", "receipt.pdf");
  expectDelivered(job, 2);
  EXPECT_EQ(count(job.received, MarkKind::kDrawerPulse), 2);
  EXPECT_EQ(count(job.received, MarkKind::kPartialCut), 2);
}

std::uint32_t firstInkedRow(const reference::Page& page) {
  const auto ink =
      std::find_if(page.pixels.begin(), page.pixels.end(), [](auto level) { return level != 0; });
  return static_cast<std::uint32_t>(ink - page.pixels.begin()) / page.bytesPerLine;
}

TEST(Queue, ItsDefaultsPlaceAReceiptAtTheTop) {
  const auto job = bench->print("wren80", "", "receipt.pdf");
  ASSERT_EQ(job.runs.size(), 1U);
  EXPECT_LT(firstInkedRow(job.runs[0].raster.at(0)), 40U);
}

TEST(Queue, ItsDefaultsKeepAPictureUpright) {
  const auto job = bench->print("wren80", "", "photo.png");
  ASSERT_EQ(job.runs.size(), 1U);
  EXPECT_EQ(job.runs[0].raster.at(0).width, 576U);
  EXPECT_EQ(job.runs[0].raster.at(0).height, 432U);
}

long inkedRows(const reference::Page& page) {
  const auto isInk = [](auto level) { return level != 0; };
  const auto first = std::find_if(page.pixels.begin(), page.pixels.end(), isInk);
  const auto last = std::find_if(page.pixels.rbegin(), page.pixels.rend(), isInk);
  return (last.base() - first) / page.bytesPerLine;
}

// The ink height of a page of 500 x 200 points at 203 dpi: 564 rows if it is not rotated, 1410 rows
// if it is.
long inkedRowsOfAWidePage(const char* queue, const char* options) {
  const auto job = bench->print(queue, options, "wide.pdf");
  EXPECT_EQ(job.runs.size(), 1U);
  return job.runs.empty() ? -1 : inkedRows(job.runs[0].raster.at(0));
}

TEST(Queue, AWidePageIsRotatedByLandscapeOnly) {
  EXPECT_LT(inkedRowsOfAWidePage("wren80", ""), 564);
  EXPECT_GT(inkedRowsOfAWidePage("wren80", "-o landscape"), 1000);
}

TEST(Queue, WithoutItsDefaultsCupsCentresAReceipt) {
  const auto job = bench->print("plain80", "", "receipt.pdf");
  ASSERT_EQ(job.runs.size(), 1U);
  EXPECT_GT(firstInkedRow(job.runs[0].raster.at(0)), 150U);
}

TEST(Queue, WithoutItsDefaultsCupsRotatesAPicture) {
  const auto job = bench->print("plain80", "", "photo.png");
  ASSERT_EQ(job.runs.size(), 1U);
  EXPECT_GT(job.runs[0].raster.at(0).height, job.runs[0].raster.at(0).width);
}

TEST(Queue, WithoutItsDefaultsCupsRotatesAWidePage) {
  EXPECT_GT(inkedRowsOfAWidePage("plain80", ""), 1000);
}

double meanInk(const reference::Page& page) {
  return std::accumulate(page.pixels.begin(), page.pixels.end(), 0.0) /
         static_cast<double>(page.pixels.size()) / 255;
}

// CUPS compares option names without case and has its own option "brightness".
TEST(Queue, BrightnessOfAJobAlsoMakesThePictureNearlyBlack) {
  const auto plain = bench->print("wren80", "", "photo.png");
  const auto dark = bench->print("wren80", "-o Brightness=10", "photo.png");
  ASSERT_EQ(plain.runs.size(), 1U);
  ASSERT_EQ(dark.runs.size(), 1U);
  EXPECT_LT(meanInk(plain.runs[0].raster.at(0)), 0.7);
  EXPECT_GT(meanInk(dark.runs[0].raster.at(0)), 0.9);
}

TEST(Queue, BrightnessOfTheQueueReachesTheFilterOnly) {
  const auto plain = bench->print("wren80", "-o HalftoneType=Burkes", "photo.png");
  const auto dark = bench->print("dark80", "-o HalftoneType=Burkes", "photo.png");
  ASSERT_EQ(plain.runs.size(), 1U);
  ASSERT_EQ(dark.runs.size(), 1U);
  EXPECT_THAT(dark.runs[0].raster.at(0).pixels, SameBytes(plain.runs[0].raster.at(0).pixels));
  EXPECT_THAT(dark.received, SameBytes(dark.runs[0].directBytes));
  EXPECT_THAT(dark.received, testing::Not(SameBytes(plain.received)));
}

TEST(Queue, BrightnessOfAJobDoesNotChangeTheRasterOfPdfAndText) {
  for (const char* document : {"receipt.pdf", "photo.pdf", "order.txt"}) {
    const auto plain = bench->print("wren80", "", document);
    const auto dark = bench->print("wren80", "-o Brightness=10", document);
    ASSERT_EQ(plain.runs.size(), 1U);
    ASSERT_EQ(dark.runs.size(), 1U);
    EXPECT_THAT(dark.runs[0].raster.at(0).pixels, SameBytes(plain.runs[0].raster.at(0).pixels))
        << document;
  }
}

TEST(Queue, AnOverWidePageIsClippedToThePrintHead) {
  const auto job = bench->print("wren80", "-o PageSize=Custom.100x150mm", "wide.pdf");
  ASSERT_EQ(job.runs.size(), 1U);
  EXPECT_GT(job.runs[0].raster.at(0).width, 576U);
  EXPECT_EQ(wren::escpos::readAll(job.received).paper.widthDots, 576U);
}

}  // namespace
