// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job without a process, with headers and pixels that no raster stream would contain.

#include "job/job.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "common/log.h"
#include "tests/job/page_list.h"
#include "tests/printer/recording_printer.h"
#include "tests/support/filter_job.h"
#include "tests/support/printer_bytes.h"

namespace {

using wren::job::Job;
using wren_test::hexOf;
using wren_test::PageList;
using wren_test::RasterPage;
using wren_test::TemporaryFolder;
using Lines = std::vector<std::string>;
using PageOutcome = Job::PageOutcome;

// Records what it is asked to print.
class RecordingPagePrinter : public WrenPrinter {
 public:
  void doPrintImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                    unsigned long width) override {
    notes.push_back(std::to_string(bytesPerLine) + "x" + std::to_string(height) + " width " +
                    std::to_string(width) + " skip " + std::to_string(getSkipRightPixels()) +
                    " edges " + std::to_string(getRemoveBlankEdges()) + " type " +
                    std::to_string(getHalftoneType()) + " brightness " +
                    std::to_string(getBrightness()) + " dpi " +
                    std::to_string(getPageHeader()->HWResolution[0]));
    first.assign(reinterpret_cast<const char*>(data), bytesPerLine);
    if (throwsBadAlloc) throw std::bad_alloc();
  }
  Lines notes;
  std::string first;
  bool throwsBadAlloc = false;
};

class JobTest : public testing::Test {
 protected:
  JobTest() { settings.debugImages = false; }

  // Runs a job over the pages and keeps what it wrote.
  bool run(PageList& pages, wren::CancelCheck cancel = {}) {
    wren_test::CaptureFile out;
    testing::internal::CaptureStderr();
    const bool result = Job(settings, printer, out.stream(), cancel).printPages(pages);
    bytes = hexOf(out.bytes());
    messages = wren_test::messageLines(testing::internal::GetCapturedStderr());
    return result;
  }
  bool run(const RasterPage& page) {
    PageList pages({page});
    const bool result = run(pages);
    sizes = pages.sizes;
    return result;
  }

  Settings settings;
  RecordingPagePrinter printer;
  std::string bytes;
  Lines messages;
  std::vector<unsigned> sizes;
};

constexpr char kJobEnd[] = "1F 1B 1F 42 65 65 70 06 1B 76";

using wren_test::pageOf;

TEST_F(JobTest, HeightOrLineLengthOfZeroEndsTheJobWithoutAMessage) {
  for (const auto& page : {pageOf(10, 0, 10), pageOf(10, 10, 0)}) {
    EXPECT_FALSE(run(page));
    EXPECT_EQ(bytes, kJobEnd);
    EXPECT_EQ(messages, Lines{"ERROR:No pages found!"});
    EXPECT_TRUE(sizes.empty());
  }
}

TEST_F(JobTest, ZeroHeightAfterAPrintedPageIsASuccess) {
  PageList pages({pageOf(8, 8, 8), pageOf(8, 0, 8), pageOf(8, 8, 8)});
  EXPECT_TRUE(run(pages));
  EXPECT_EQ(printer.notes.size(), 1U);
  EXPECT_EQ(messages.back(), "DEBUG:Ready to print.");
}

TEST_F(JobTest, DepthIsCheckedBeforeHeight) {
  RasterPage page = pageOf(10, 0, 10);
  page.header.cupsBitsPerPixel = 1;
  EXPECT_FALSE(run(page));
  EXPECT_EQ(bytes, "");
  EXPECT_EQ(messages, Lines{"ERROR:Unsupported bits per pixel : 1 ! Requires 8 bits per pixel!"});
}

TEST_F(JobTest, GeometryThatWouldOverflowABufferIsRefusedAfterThePageSetup) {
  const struct {
    RasterPage page;
    const char* reason;
  } rows[] = {
      {pageOf(0, 10, 10), "its width is 0"},
      {pageOf(11, 10, 10), "its width is greater than its bytes per line"},
      {pageOf(65537, 65536, 65537), "it has more than 2147483647 bytes"},
      {pageOf(1, 0xFFFFFFFFU, 0xFFFFFFFFU), "it has more than 2147483647 bytes"},
  };
  settings.buzzer1Setting = 1;
  for (const auto& row : rows) {
    EXPECT_FALSE(run(row.page));
    EXPECT_EQ(bytes, std::string("1B 42 00 00 ") + kJobEnd);
    EXPECT_EQ(messages, (Lines{"DEBUG:Try print page: 1 1",
                               std::string("ERROR:Unable to print page 1: ") + row.reason + "!",
                               "ERROR:No pages found!"}));
    EXPECT_TRUE(sizes.empty());
    EXPECT_TRUE(printer.notes.empty());
  }
}

TEST_F(JobTest, ExcessThatLeavesNothingIsRefused) {
  settings.maxMediaWidth = 72.0 * 10 / 203 + 0.01;  // 10 pixels
  EXPECT_FALSE(run(pageOf(90, 4, 100)));
  EXPECT_EQ(messages[1], "ERROR:Unable to print page 1: the printable width leaves nothing of it!");
  EXPECT_TRUE(run(pageOf(91, 4, 100)));
  EXPECT_EQ(printer.notes.back(), "100x4 width 91 skip 90 edges 15 type 0 brightness 0 dpi 203");
}

TEST_F(JobTest, PrinterIsConfiguredFromSettingsAndHeader) {
  settings.pageType = 1;
  settings.halftoneType = Sierra;
  settings.brightness = 150;
  settings.maxMediaWidth = 204.0;
  RasterPage page = pageOf(600, 3, 600);
  page.pixels = std::string(12, '\0') + std::string(600 * 3 - 12, '\xFF');
  EXPECT_TRUE(run(page));
  EXPECT_EQ(printer.notes, Lines{"600x3 width 600 skip 25 edges 0 type 6 brightness 100 dpi 203"});
  EXPECT_EQ(printer.first, std::string(600, '\xFF'));
}

TEST_F(JobTest, OtherPageTypesRemoveBlankEdges) {
  for (const int pageType : {-1, 0, 2}) {
    settings.pageType = pageType;
    EXPECT_TRUE(run(pageOf(8, 8, 8)));
    EXPECT_NE(printer.notes.back().find("edges 15"), std::string::npos) << pageType;
  }
}

TEST_F(JobTest, UnreadablePixelsEndTheJobInTheUsualWay) {
  RasterPage broken = pageOf(8, 8, 8);
  broken.pixels.resize(63);
  PageList pages({pageOf(8, 8, 8), pageOf(8, 8, 8), broken, pageOf(8, 8, 8)});
  EXPECT_TRUE(run(pages));
  EXPECT_EQ(printer.notes.size(), 2U);
  EXPECT_EQ(bytes, std::string("1B 4A 10 1B 4A 10 ") + kJobEnd);
  ASSERT_GE(messages.size(), 3U);
  EXPECT_EQ(messages[messages.size() - 3], "DEBUG:Try print page: 3 1");
  EXPECT_EQ(messages[messages.size() - 2], "ERROR:Failed to get 3 page data!");
  EXPECT_EQ(messages.back(), "DEBUG:Ready to print.");
}

TEST_F(JobTest, UnsupportedDepthAfterAPageReportsAFailure) {
  RasterPage bits = pageOf(8, 8, 8);
  bits.header.cupsBitsPerPixel = 24;
  PageList pages({pageOf(8, 8, 8), bits});
  EXPECT_FALSE(run(pages));
  EXPECT_EQ(bytes, "1B 4A 10");
  EXPECT_EQ(messages.back(), "ERROR:Unsupported bits per pixel : 24 ! Requires 8 bits per pixel!");
}

TEST_F(JobTest, CopiesAreOnlyLogged) {
  RasterPage page = pageOf(8, 8, 8);
  page.header.NumCopies = 3;
  EXPECT_TRUE(run(page));
  EXPECT_EQ(printer.notes.size(), 1U);
  EXPECT_EQ(messages.front(), "DEBUG:Try print page: 1 3");
}

TEST_F(JobTest, SmallerPageAfterALargerOneHasItsOwnSize) {
  PageList pages({pageOf(8, 8, 8), pageOf(4, 2, 4), pageOf(16, 16, 16)});
  EXPECT_TRUE(run(pages));
  EXPECT_EQ(pages.sizes, (std::vector<unsigned>{64, 8, 256}));
  EXPECT_EQ(printer.notes.size(), 3U);
}

TEST_F(JobTest, BeginsWith64ZerosAndTheSetup) {
  wren_test::CaptureFile out;
  Job(settings, printer, out.stream()).begin();
  const std::string begin = out.bytes();
  EXPECT_EQ(begin.substr(0, 64), std::string(64, '\0'));
  EXPECT_EQ(hexOf(begin.substr(64)), "1B 40 1F 1B 1F 42 65 65 70 06 1B 55 00");
}

// Cancelled before, while reading the header, while reading the pixels. Only the last of them
// has heard the page's buzzer.
TEST_F(JobTest, CancelledJobEndsQuietlyWithoutDrawerAndBuzzer) {
  const std::string pageSetups[] = {"", "", "1B 42 00 00 "};
  settings.buzzer1Setting = 1;
  settings.buzzer2Setting = 2;
  settings.cashDrawerSetting = 2;
  settings.docCutType = 1;
  for (int when = 0; when < 3; ++when) {
    bool flag = when == 0;
    PageList pages({pageOf(8, 8, 8)});
    if (when == 1) pages.cancelAtHeader = &flag;
    if (when == 2) pages.cancelAtPixels = &flag;
    EXPECT_TRUE(
        run(pages, {[](const void* asked) { return *static_cast<const bool*>(asked); }, &flag}))
        << when;
    EXPECT_EQ(bytes, pageSetups[when] + "1B 4A 10 1B 4A 00 1D 56 00 " + kJobEnd) << when;
    EXPECT_TRUE(printer.notes.empty());
    for (const auto& line : messages) EXPECT_EQ(line.find("ERROR"), std::string::npos) << line;
  }
}

// --- Pages one by one, as a shell of its own calls them ---

TEST_F(JobTest, EachPageReportsWhatBecameOfIt) {
  RasterPage deep = pageOf(8, 8, 8);
  deep.header.cupsBitsPerPixel = 24;
  RasterPage cut = pageOf(8, 8, 8);
  cut.pixels.resize(63);
  const struct {
    RasterPage page;
    PageOutcome outcome;
  } rows[] = {
      {pageOf(8, 8, 8), PageOutcome::kPrinted}, {pageOf(8, 0, 8), PageOutcome::kNoMorePages},
      {pageOf(9, 8, 8), PageOutcome::kRefused}, {cut, PageOutcome::kIncomplete},
      {deep, PageOutcome::kUnsupported},
  };
  for (const auto& row : rows) {
    PageList pages({row.page});
    wren_test::CaptureFile out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Job(settings, printer, out.stream()).printPage(pages), row.outcome);
    testing::internal::GetCapturedStderr();
    // Only a page that was printed has its end.
    EXPECT_EQ(hexOf(out.bytes()), row.outcome == PageOutcome::kPrinted ? "1B 4A 10" : "");
  }
}

// Whatever the page is, the next one can be printed.
TEST_F(JobTest, GoesOnAfterAPageThatWasRefusedOrFoundNoMemory) {
  PageList pages({pageOf(9, 8, 8), pageOf(8, 8, 8), pageOf(8, 8, 8)});
  wren_test::CaptureFile out;
  Job job(settings, printer, out.stream());
  testing::internal::CaptureStderr();
  EXPECT_EQ(job.printPage(pages), PageOutcome::kRefused);
  printer.throwsBadAlloc = true;
  EXPECT_THROW(job.printPage(pages), std::bad_alloc);
  printer.throwsBadAlloc = false;
  EXPECT_EQ(job.printPage(pages), PageOutcome::kPrinted);
  EXPECT_TRUE(job.end());
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(hexOf(out.bytes()), std::string("1B 4A 10 ") + kJobEnd);
}

// --- Its streams ---

TEST_F(JobTest, WritesToTheStreamGivenAndToNoOther) {
  PageList pages({pageOf(8, 8, 8)});
  DotMatrixEpPrinter real;
  wren_test::CaptureFile out;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Job job(settings, real, out.stream());
  job.begin();
  EXPECT_TRUE(job.printPages(pages));
  testing::internal::GetCapturedStderr();
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(out.bytes().size(), 64U + 13 + 2 + 5 + 8 + 3 + 3 + 10);
}

TEST_F(JobTest, LeavesAFailedWriteToItsCaller) {
  const wren::FilePtr full(std::fopen("/dev/full", "w"));
  ASSERT_NE(full, nullptr);
  std::setvbuf(full.get(), nullptr, _IONBF, 0);
  PageList pages({pageOf(8, 8, 8)});
  DotMatrixEpPrinter real;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Job(settings, real, full.get()).printPages(pages));
  testing::internal::GetCapturedStderr();
  EXPECT_NE(std::ferror(full.get()), 0);
}

// A stream with a buffer keeps its bytes until its owner flushes it.
TEST_F(JobTest, NeitherFlushesNorClosesItsStream) {
  const TemporaryFolder folder;
  const wren::FilePtr file(std::fopen((folder.path() / "out").c_str(), "w"));
  ASSERT_NE(file, nullptr);
  PageList pages({pageOf(8, 8, 8)});
  {
    // Not captured by the test framework, which flushes every stream.
    const wren::MessageSink silent([](void*, const char*, std::size_t) {}, nullptr);
    EXPECT_TRUE(Job(settings, printer, file.get()).printPages(pages));
  }
  EXPECT_EQ(wren_test::readFile(folder.path() / "out"), "");
  EXPECT_EQ(std::fflush(file.get()), 0);
  EXPECT_EQ(wren_test::readFile(folder.path() / "out").size(), 3U + 10);
}

TEST_F(JobTest, SavesDebugImagesOnlyIfTheSettingsSaySo) {
  for (const bool wanted : {false, true}) {
    const TemporaryFolder folder;
    settings.debugImages = wanted;
    printer.setDebugImageFolder(folder.path().string());
    run(pageOf(8, 8, 8));
    EXPECT_EQ(wren_test::savedImages(folder.path()).size(), wanted ? 2U : 0U);
  }
}

}  // namespace
