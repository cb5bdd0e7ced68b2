// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job driven without a process, with headers and pixels that no raster stream would
// carry.

#include "filter/job.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/printer/recording_printer.h"
#include "tests/support/filter_job.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/raster_stream.h"

namespace {

using wren_test::greyHeader;
using wren_test::hexOf;
using wren_test::RasterPage;
using Lines = std::vector<std::string>;

// Pages from memory.
class PageList : public PageSource {
 public:
  explicit PageList(std::vector<RasterPage> list) : pages(std::move(list)) {}
  bool readHeader(cups_page_header2_s& header) override {
    if (next == pages.size()) return false;
    header = pages[next++].header;
    if (cancelAtHeader != nullptr) *cancelAtHeader = 1;
    return true;
  }
  bool readPixels(unsigned char* pixels, unsigned size) override {
    const std::string& bytes = pages[next - 1].pixels;
    sizes.push_back(size);
    if (cancelAtPixels != nullptr) *cancelAtPixels = 1;
    if (bytes.size() < size) return false;
    std::copy_n(bytes.begin(), size, pixels);
    return true;
  }
  std::vector<unsigned> sizes;
  volatile std::sig_atomic_t* cancelAtHeader = nullptr;
  volatile std::sig_atomic_t* cancelAtPixels = nullptr;

 private:
  std::vector<RasterPage> pages;
  std::size_t next = 0;
};

// Notes what it is asked to print.
class NotingPrinter : public WrenPrinter {
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
  }
  Lines notes;
  std::string first;
};

class JobTest : public testing::Test {
 protected:
  // Runs a job over the pages and keeps what it wrote.
  bool run(PageList& pages, const Settings& settings, CancelSignal cancel = {}) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool result = Job(settings, printer, cancel).printPages(pages);
    std::fflush(stdout);
    bytes = hexOf(testing::internal::GetCapturedStdout());
    messages = wren_test::messageLines(testing::internal::GetCapturedStderr());
    return result;
  }
  bool run(const RasterPage& page, const Settings& settings = {}) {
    PageList pages({page});
    const bool result = run(pages, settings);
    sizes = pages.sizes;
    return result;
  }

  wren_test::SpoolWorkingFolder folder;
  NotingPrinter printer;
  std::string bytes;
  Lines messages;
  std::vector<unsigned> sizes;
};

constexpr char kJobEnd[] = "1F 1B 1F 42 65 65 70 06 1B 76";

RasterPage pageOf(unsigned width, unsigned height, unsigned bytesPerLine) {
  RasterPage page = {greyHeader(width, height), {}};
  page.header.cupsBytesPerLine = bytesPerLine;
  page.pixels.assign(std::min<std::size_t>(static_cast<std::size_t>(bytesPerLine) * height, 100000),
                     '\x90');
  return page;
}

TEST_F(JobTest, HeightOrLineOfZeroEndsTheJobWithoutAWord) {
  for (const auto& page : {pageOf(10, 0, 10), pageOf(10, 10, 0)}) {
    EXPECT_FALSE(run(page));
    EXPECT_EQ(bytes, kJobEnd);
    EXPECT_EQ(messages, Lines{"ERROR:No pages found!"});
    EXPECT_TRUE(sizes.empty());
  }
}

TEST_F(JobTest, ZeroHeightAfterAPrintedPageIsASuccess) {
  PageList pages({pageOf(8, 8, 8), pageOf(8, 0, 8), pageOf(8, 8, 8)});
  EXPECT_TRUE(run(pages, {}));
  EXPECT_EQ(printer.notes.size(), 1U);
  EXPECT_EQ(messages.back(), "DEBUG:Ready to print.");
}

TEST_F(JobTest, DepthComesBeforeHeight) {
  RasterPage page = pageOf(10, 0, 10);
  page.header.cupsBitsPerPixel = 1;
  EXPECT_FALSE(run(page));
  EXPECT_EQ(bytes, "");
  EXPECT_EQ(messages, Lines{"ERROR:Unsupported bits per pixel : 1 ! Requires 8 bits per pixel!"});
}

TEST_F(JobTest, GeometryThatWouldLeaveABufferIsRefusedAfterThePageSetup) {
  const struct {
    RasterPage page;
    const char* reason;
  } rows[] = {
      {pageOf(0, 10, 10), "its width is 0"},
      {pageOf(11, 10, 10), "its width is greater than its bytes per line"},
      {pageOf(65537, 65536, 65537), "it has more than 2147483647 bytes"},
      {pageOf(1, 0xFFFFFFFFU, 0xFFFFFFFFU), "it has more than 2147483647 bytes"},
  };
  Settings settings;
  settings.buzzer1Setting = 1;
  for (const auto& row : rows) {
    EXPECT_FALSE(run(row.page, settings));
    EXPECT_EQ(bytes, std::string("1B 42 00 00 ") + kJobEnd);
    EXPECT_EQ(messages, (Lines{"DEBUG:Try print page: 1 1",
                               std::string("ERROR:Unable to print page 1: ") + row.reason + "!",
                               "ERROR:No pages found!"}));
    EXPECT_TRUE(sizes.empty());
    EXPECT_TRUE(printer.notes.empty());
  }
}

TEST_F(JobTest, ExcessThatLeavesNothingIsRefused) {
  Settings settings;
  settings.maxMediaWidth = 72.0 * 10 / 203 + 0.01;  // 10 pixels
  EXPECT_FALSE(run(pageOf(90, 4, 100), settings));
  EXPECT_EQ(messages[1], "ERROR:Unable to print page 1: the printable width leaves nothing of it!");
  EXPECT_TRUE(run(pageOf(91, 4, 100), settings));
  EXPECT_EQ(printer.notes.back(), "100x4 width 91 skip 90 edges 15 type 0 brightness 0 dpi 203");
}

TEST_F(JobTest, PrinterIsConfiguredFromSettingsAndHeader) {
  Settings settings;
  settings.pageType = 1;
  settings.halftoneType = Sierra;
  settings.brightness = 150;
  settings.maxMediaWidth = 204.0;
  RasterPage page = pageOf(600, 3, 600);
  page.pixels = std::string(12, '\0') + std::string(600 * 3 - 12, '\xFF');
  EXPECT_TRUE(run(page, settings));
  EXPECT_EQ(printer.notes, Lines{"600x3 width 600 skip 25 edges 0 type 6 brightness 100 dpi 203"});
  EXPECT_EQ(printer.first, std::string(600, '\xFF'));
}

TEST_F(JobTest, OtherPageTypesRemoveBlankEdges) {
  for (const int pageType : {-1, 0, 2}) {
    Settings settings;
    settings.pageType = pageType;
    EXPECT_TRUE(run(pageOf(8, 8, 8), settings));
    EXPECT_NE(printer.notes.back().find("edges 15"), std::string::npos) << pageType;
  }
}

TEST_F(JobTest, UnreadablePixelsEndTheJobInTheOrdinaryWay) {
  RasterPage broken = pageOf(8, 8, 8);
  broken.pixels.resize(63);
  PageList pages({pageOf(8, 8, 8), pageOf(8, 8, 8), broken, pageOf(8, 8, 8)});
  EXPECT_TRUE(run(pages, {}));
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
  EXPECT_FALSE(run(pages, {}));
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
  EXPECT_TRUE(run(pages, {}));
  EXPECT_EQ(pages.sizes, (std::vector<unsigned>{64, 8, 256}));
  EXPECT_EQ(printer.notes.size(), 3U);
}

TEST_F(JobTest, BeginsWith64ZerosAndTheSetup) {
  testing::internal::CaptureStdout();
  beginJob({});
  std::fflush(stdout);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.substr(0, 64), std::string(64, '\0'));
  EXPECT_EQ(hexOf(out.substr(64)), "1B 40 1F 1B 1F 42 65 65 70 06 1B 55 00");
}

// Cancelled before, while reading the header, while reading the pixels.
TEST_F(JobTest, CancelledJobEndsQuietlyWithoutDrawerAndBuzzer) {
  Settings settings;
  settings.buzzer2Setting = 2;
  settings.cashDrawerSetting = 2;
  settings.docCutType = 1;
  for (int when = 0; when < 3; ++when) {
    volatile std::sig_atomic_t flag = when == 0 ? 1 : 0;
    PageList pages({pageOf(8, 8, 8)});
    if (when == 1) pages.cancelAtHeader = &flag;
    if (when == 2) pages.cancelAtPixels = &flag;
    EXPECT_TRUE(run(pages, settings, {&flag, -1})) << when;
    EXPECT_EQ(bytes, std::string("1B 4A 10 1B 4A 00 1D 56 00 ") + kJobEnd) << when;
    EXPECT_TRUE(printer.notes.empty());
    for (const auto& line : messages) EXPECT_EQ(line.find("ERROR"), std::string::npos) << line;
  }
}

}  // namespace
