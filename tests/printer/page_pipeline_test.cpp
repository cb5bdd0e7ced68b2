// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page pipeline, held to the literal version of a page (written by another hand)
// and to pages small enough to be read off by eye.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <random>

#include "bitmap/cximage.h"
#include "tests/printer/page_options.h"
#include "tests/printer/recording_printer.h"
#include "tests/reference/page.h"
#include "tests/support/filter_job.h"
#include "tests/support/printer_bytes.h"

#ifdef __SANITIZE_ADDRESS__
// A sanitizer ends the program at a request that no system could fill, unless told otherwise.
extern "C" const char* __asan_default_options();
const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using wren_test::applyOptions;
using wren_test::bytesOf;
using wren_test::fromHex;
using wren_test::hexLines;
using wren_test::hexOf;
using wren_test::linesOf;
using wren_test::messageLines;
using wren_test::printedPages;
using wren_test::RecordingPrinter;
using wren_test::SpoolWorkingFolder;

using Lines = std::vector<std::string>;

struct Page {
  std::string pixels;
  unsigned long bytesPerLine;
  unsigned long height;
  unsigned long width;
};

std::string text(const reference::Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

Page noise(unsigned long width, unsigned long height, unsigned seed, unsigned long tail = 0) {
  std::mt19937 numbers(seed);
  Page page = {std::string((width + tail) * height, '\0'), width + tail, height, width};
  for (auto& pixel : page.pixels) pixel = static_cast<char>(numbers() & 0xFF);
  return page;
}

// A page of levels that rise from left to right, with blank rows around it.
Page framed(unsigned long width, unsigned long height, unsigned long top, unsigned long bottom) {
  Page page = {std::string(width * height, '\0'), width, height, width};
  for (unsigned long y = top; y < height - bottom; ++y) {
    for (unsigned long x = 0; x < width; ++x) {
      page.pixels[y * width + x] = static_cast<char>((x * 37 + y * 11) % 256);
    }
  }
  return page;
}

class PagePipeline : public testing::Test {
 protected:
  struct Printed {
    std::string bytes;
    Lines messages;
    Lines images;
  };

  Printed print(RecordingPrinter& printer, const Page& page) {
    std::filesystem::remove_all(folder.spool());
    std::filesystem::create_directory(folder.spool());
    CaptureStderr();
    printer.printImage(bytesOf(page.pixels), page.bytesPerLine, page.height, page.width);
    Printed printed = {printer.bytes(), messageLines(GetCapturedStderr()), {}};
    for (const auto& image : wren_test::savedImages(folder.spool())) {
      printed.images.push_back(image.kind + " " + image.bytes);
    }
    return printed;
  }

  void expectLikeTheLiteralVersion(const reference::PageOptions& options, const Page& page,
                                   const std::string& what) {
    RecordingPrinter printer;
    applyOptions(options, printer);
    printer.header.HWResolution[0] = options.hwResolutionX;
    const Printed printed = print(printer, page);
    const auto expected = reference::printImage(options, bytesOf(page.pixels), page.bytesPerLine,
                                                page.height, page.width);
    Lines images;
    for (const auto& dump : expected.dumps) images.push_back(dump.kind + " " + text(dump.bytes));
    EXPECT_EQ(printed.bytes == text(reference::bytesOf(expected.commands)), true) << what;
    EXPECT_EQ(printed.messages, expected.log) << what;
    EXPECT_EQ(printed.images == images, true) << what;
  }

  SpoolWorkingFolder folder;
};

std::string nameOf(const reference::PageOptions& o) {
  return "type " + std::to_string(o.halftoneType) + " brightness " + std::to_string(o.brightness) +
         " contrast " + std::to_string(o.contrast) + (o.negative ? " negative" : "") +
         (o.mirror ? " mirror" : "") + (o.rotate180 ? " rotated" : "") + " trim " +
         std::to_string(o.removeBlankEdges) + " skip " + std::to_string(o.skipRightPixels);
}

TEST_F(PagePipeline, OrientationAndNegativeOfEveryMethod) {
  for (int type = 0; type <= 8; ++type) {
    for (int bits = 0; bits < 8; ++bits) {
      reference::PageOptions options;
      options.halftoneType = type;
      options.negative = (bits & 1) != 0;
      options.mirror = (bits & 2) != 0;
      options.rotate180 = (bits & 4) != 0;
      options.removeBlankEdges = 15;
      expectLikeTheLiteralVersion(options, framed(21, 19, 4, 3), nameOf(options));
    }
  }
}

TEST_F(PagePipeline, ToneOfTheClassicAndTheStencilBranch) {
  for (const int type : {0, 4, 8}) {
    for (const int contrast : {0, -1, 1, -50, 50, -100, 100}) {
      for (const int brightness : {0, -100, -20, -1, 20, 100}) {
        reference::PageOptions options;
        options.halftoneType = type;
        options.contrast = contrast;
        options.brightness = brightness;
        expectLikeTheLiteralVersion(options, noise(18, 11, 5), nameOf(options));
      }
    }
  }
}

TEST_F(PagePipeline, EveryTrimOfEveryKindOfPage) {
  for (const int type : {0, 8}) {
    for (const int trim : {0, 1, 2, 4, 8, 10, 15, 255}) {
      reference::PageOptions options;
      options.halftoneType = type;
      options.removeBlankEdges = static_cast<std::uint8_t>(trim);
      for (const auto& [top, bottom] :
           {std::pair{0UL, 0UL}, {0UL, 9UL}, {1UL, 0UL}, {3UL, 6UL}, {9UL, 0UL}, {5UL, 5UL}}) {
        expectLikeTheLiteralVersion(options, framed(9, 10, top, bottom), nameOf(options));
      }
    }
  }
}

// The counts are taken on the page as received and applied to the turned page.
TEST_F(PagePipeline, TrimsATurnedPageByTheCountsOfThePageAsReceived) {
  for (const int type : {0, 3, 8}) {
    reference::PageOptions options;
    options.halftoneType = type;
    options.rotate180 = true;
    options.removeBlankEdges = 15;
    expectLikeTheLiteralVersion(options, framed(16, 20, 6, 1), nameOf(options));
  }
}

TEST_F(PagePipeline, SkippedPixelsAndLinesLongerThanTheWidth) {
  for (const int type : {0, 1, 5, 7, 8}) {
    for (const unsigned long tail : {0UL, 1UL, 3UL, 12UL, 40UL}) {
      for (const unsigned long skip : {0UL, 1UL, 5UL}) {
        reference::PageOptions options;
        options.halftoneType = type;
        options.skipRightPixels = skip;
        options.removeBlankEdges = 15;
        options.negative = tail == 3;
        expectLikeTheLiteralVersion(options, noise(13, 9, 7, tail), nameOf(options));
      }
    }
  }
}

TEST_F(PagePipeline, SmallAndOddPages) {
  for (int type = 0; type <= 8; ++type) {
    reference::PageOptions options;
    options.halftoneType = type;
    options.removeBlankEdges = 15;
    for (unsigned long width = 1; width <= 17; ++width) {
      expectLikeTheLiteralVersion(options, noise(width, 1 + width % 5, 3), nameOf(options));
    }
    expectLikeTheLiteralVersion(options, noise(575, 3, 4), nameOf(options));
  }
}

TEST_F(PagePipeline, PagesOfOneLevel) {
  for (const int type : {0, 1, 7, 8}) {
    for (const char level : {'\0', '\x01', '\x7F', '\xFF'}) {
      reference::PageOptions options;
      options.halftoneType = type;
      expectLikeTheLiteralVersion(options, {std::string(64, level), 8, 8, 8}, nameOf(options));
    }
  }
}

// --- Read off by eye ---

Page tenRows(const std::vector<unsigned long>& rowsWithDots) {
  Page page = {std::string(40, '\0'), 4, 10, 4};
  for (const auto row : rowsWithDots) page.pixels.replace(4 * row, 4, 4, '\xFF');
  return page;
}

TEST_F(PagePipeline, OneRowOfDotsIsPrintedWithTheBlankRowAboveIt) {
  RecordingPrinter printer;
  printer.setRemoveBlankEdges(15);
  const auto printed = print(printer, tenRows({3}));
  EXPECT_EQ(printedPages(printed.bytes)[0].rows, (Lines{"....", "####"}));
  EXPECT_EQ(printed.messages,
            (Lines{"DEBUG:printImage: p(ADDRESS), width(4), height(10), w(4), topBlanks(2), "
                   "bottomBlanks(4), h_fixed(2)"}));
}

// Printed output depends on row 0 not being tested: its dots are cut away here.
TEST_F(PagePipeline, DotsOfRowZeroAloneAboveBlankRowsAreCutAway) {
  RecordingPrinter printer;
  printer.setRemoveBlankEdges(15);
  EXPECT_EQ(printedPages(print(printer, tenRows({0, 5})).bytes)[0].rows, (Lines{"....", "####"}));
}

TEST_F(PagePipeline, PageWithoutDotsIsPrintedAtFullHeight) {
  RecordingPrinter printer;
  printer.setRemoveBlankEdges(15);
  EXPECT_EQ(printedPages(print(printer, tenRows({})).bytes)[0].rows.size(), 10U);
}

TEST_F(PagePipeline, TrimmingNeedsTheBitOfValue8) {
  const struct {
    int bits;
    std::size_t rows;
  } cases[] = {{0, 10}, {1, 10}, {2, 10}, {4, 10}, {5, 10}, {8, 4}, {10, 2}, {15, 2}};
  for (const auto& row : cases) {
    RecordingPrinter printer;
    printer.setRemoveBlankEdges(static_cast<unsigned char>(row.bits));
    EXPECT_EQ(printedPages(print(printer, tenRows({3})).bytes)[0].rows.size(), row.rows)
        << row.bits;
  }
}

TEST_F(PagePipeline, SecondStreamReceivesTheSamePage) {
  wren_test::CaptureFile second;
  RecordingPrinter printer;
  printer.getOutputStreams().push_back(second.stream());
  const auto printed = print(printer, noise(20, 20, 9));
  EXPECT_EQ(second.bytes(), printed.bytes);
  EXPECT_EQ(printed.bytes.size(), 2U + 3 * (5 + 20 + 3));
}

TEST_F(PagePipeline, LeavesThePageAsReceivedAlone) {
  for (const auto type : {Burkes, QVDithering}) {
    RecordingPrinter printer;
    printer.setHalftoneType(type);
    printer.setBrightness(20);
    printer.setRotate180Print(true);
    const Page page = noise(30, 20, 3);
    const std::string before(page.pixels.data(), page.pixels.size());
    print(printer, page);
    EXPECT_EQ(page.pixels, before);
  }
}

TEST_F(PagePipeline, KeepsTheTemplateOfTheSecondDump) {
  RecordingPrinter printer;
  print(printer, tenRows({}));
  EXPECT_EQ(printer.imageFormat(), "spool/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp");
}

TEST_F(PagePipeline, StencilPageLogsItsStrideRoundedUpToFour) {
  RecordingPrinter printer;
  printer.setHalftoneType(QVDithering);
  const auto printed = print(printer, noise(9, 4, 3));
  ASSERT_GE(printed.messages.size(), 2U);
  EXPECT_EQ(printed.messages[0], "DEBUG:QVDithered with stride(12), BytesPerLine(9)");
  EXPECT_EQ(printed.messages[1], "DEBUG:PageProcess filled anser with length(36)!");
}

TEST(PageProcess, RewritesTheStencilFlagFromTheHalftoneType) {
  const std::string page(4, '\x10');
  unsigned char out[4];
  testing::internal::CaptureStderr();
  for (int type = -1; type <= 9; ++type) {
    RecordingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(type));
    printer.setUseQVDithering(type != 8);
    printer.PageProcess(None, bytesOf(page), 2, 2, 2, out);
    EXPECT_EQ(printer.getUseQVDithering(), type == 8) << type;
  }
  testing::internal::GetCapturedStderr();
}

std::string processed(RecordingPrinter& printer, DitherType type, const std::string& page,
                      int bytesPerLine, int width, int height) {
  std::string out(page.size(), '\x55');
  EXPECT_EQ(printer.PageProcess(type, bytesOf(page), bytesPerLine, width, height,
                                reinterpret_cast<unsigned char*>(out.data())),
            height * bytesPerLine);
  return out;
}

TEST(PageProcess, NegativeTurnsDotsIntoZeroAndTheRestInto255) {
  RecordingPrinter printer;
  const std::string page = fromHex("80 81");
  EXPECT_EQ(hexOf(processed(printer, None, page, 2, 2, 1)), "00 FF");
  printer.setNegativePrint(true);
  EXPECT_EQ(hexOf(processed(printer, None, page, 2, 2, 1)), "FF 00");
}

TEST(PageProcess, WritesNothingBeyondTheWidth) {
  RecordingPrinter printer;
  EXPECT_EQ(hexOf(processed(printer, None, fromHex("FF00FFFF 00FFFFFF"), 4, 2, 2)),
            "FF 00 55 55 00 FF 55 55");
}

// Half a GiB of addresses over 16 MiB of memory, so that a huge page costs little.
class WideMemory {
 public:
  static constexpr std::size_t kBytes = std::size_t{1} << 29;

  WideMemory() : file(std::tmpfile()) {
    EXPECT_EQ(ftruncate(fileno(file), kPiece), 0);
    start = static_cast<unsigned char*>(
        mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    for (std::size_t at = 0; at < kBytes; at += kPiece) {
      EXPECT_NE(
          mmap(start + at, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fileno(file), 0),
          MAP_FAILED);
    }
  }
  WideMemory(const WideMemory&) = delete;
  WideMemory& operator=(const WideMemory&) = delete;
  ~WideMemory() {
    munmap(start, kBytes);
    std::fclose(file);
  }
  unsigned char* data() { return start; }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 24;
  FILE* file;
  unsigned char* start;
};

// The bits of 2^29 pixels wrap 32 bits, which the bitmap refuses.
TEST(PageProcess, PageTooLargeForTheBitmapIsEmptyAndCostsOneLine) {
  WideMemory memory;
  constexpr int kWidth = 1 << 29;
  memory.data()[0] = 7;
  memory.data()[kWidth - 1] = 7;
  RecordingPrinter printer;
  printer.setBrightness(100);
  printer.setMirrorPrint(true);
  printer.setRotate180Print(true);
  CaptureStderr();
  EXPECT_EQ(printer.PageProcess(None, memory.data(), kWidth, kWidth, 1, memory.data()), kWidth);
  EXPECT_EQ(GetCapturedStderr(), "CRIT:cximage.CreateFromArray with grey failed!\n");
  EXPECT_EQ(memory.data()[0], 0);
  EXPECT_EQ(memory.data()[kWidth - 1], 0);
}

// Such a page is also more than the stencil method could work on.
TEST(PageProcess, PageTooLargeForTheBitmapHasNoDotsInTheStencilBranchEither) {
  WideMemory memory;
  constexpr int kWidth = 1 << 29;
  memory.data()[0] = 7;
  memory.data()[kWidth - 1] = 7;
  RecordingPrinter printer;
  printer.setHalftoneType(QVDithering);
  printer.setNegativePrint(true);
  CaptureStderr();
  EXPECT_EQ(printer.PageProcess(QVDithering, memory.data(), kWidth, kWidth, 1, memory.data()),
            kWidth);
  EXPECT_EQ(GetCapturedStderr(),
            "CRIT:cximage.CreateFromArray with grey failed!\n"
            "DEBUG:QVDithered with stride(536870912), BytesPerLine(536870912)\n"
            "DEBUG:PageProcess filled anser with length(536870912)!\n");
  EXPECT_EQ(memory.data()[0], 255);
  EXPECT_EQ(memory.data()[kWidth - 1], 255);
}

// A page without rows cannot become a bitmap either.
TEST(PageProcess, EmptyBitmapGivesNoDotsInEitherBranch) {
  for (const auto type : {None, QVDithering}) {
    RecordingPrinter printer;
    printer.setHalftoneType(type);
    unsigned char byte = 0x55;
    CaptureStderr();
    EXPECT_EQ(printer.PageProcess(type, &byte, 1, 1, 0, &byte), 0);
    EXPECT_EQ(linesOf(GetCapturedStderr())[0], "CRIT:cximage.CreateFromArray with grey failed!");
    EXPECT_EQ(byte, 0x55);
  }
}

TEST(PageProcess, BrightnessOf20RaisesEveryLevelBy100) {
  RecordingPrinter printer;
  printer.setBrightness(20);
  EXPECT_EQ(hexOf(processed(printer, None, fromHex("1C 1D"), 2, 2, 1)), "00 FF");
}

TEST(PageProcess, TypesRunTheMethodsOneStepOff) {
  std::string ramp;
  for (int i = 0; i < 16 * 16; ++i) ramp += static_cast<char>(i);
  for (int type = 0; type <= 7; ++type) {
    RecordingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(type));
    CxImage image;
    ASSERT_TRUE(image.CreateFromArray(bytesOf(ramp), 16, 16, 8, 16, false));
    image.Dither(type);
    const std::string out = processed(printer, static_cast<DitherType>(type), ramp, 16, 16, 16);
    for (int i = 0; i < 256; ++i) {
      EXPECT_EQ(out[static_cast<std::size_t>(i)],
                static_cast<char>(image.GetPixelIndex(i % 16, i / 16) != 0 ? 255 : 0));
    }
  }
}

TEST(GrayToMono, PacksTenPixelsIntoTwoBytes) {
  RecordingPrinter printer;
  std::string buffer = fromHex("01 00 00 00 00 00 00 01 01 00");
  CaptureStderr();
  EXPECT_EQ(printer.GrayToMono(10, 1, reinterpret_cast<unsigned char*>(buffer.data())), 2);
  EXPECT_EQ(GetCapturedStderr(), "DEBUG:GrayToMono, bpl(10), h(1), skipPixels(0), wb(10)\n");
  EXPECT_EQ(hexOf(buffer.substr(0, 2)), "81 80");
}

TEST(GrayToMono, LikeTheLiteralVersion) {
  for (const unsigned long skip : {0UL, 1UL, 3UL, 9UL, 10UL, 11UL}) {
    RecordingPrinter printer;
    printer.setSkipRightPixels(skip);
    Page page = noise(10, 4, 8);
    for (auto& pixel : page.pixels) pixel = static_cast<char>(pixel & 1);
    std::string expected = page.pixels;
    std::vector<std::string> log;
    const int count =
        reference::GrayToMono(10, 4, reinterpret_cast<std::uint8_t*>(expected.data()), skip, log);
    CaptureStderr();
    EXPECT_EQ(printer.GrayToMono(10, 4, reinterpret_cast<unsigned char*>(page.pixels.data())),
              count);
    EXPECT_EQ(linesOf(GetCapturedStderr()), log);
    EXPECT_EQ(page.pixels.substr(0, static_cast<std::size_t>(count)),
              expected.substr(0, static_cast<std::size_t>(count)));
  }
}

TEST_F(PagePipeline, PageThatDoesNotFitIntoMemoryLeavesNoTrace) {
  RecordingPrinter printer;
  CaptureStderr();
  const std::string page(16, '\x01');
  printer.printImage(bytesOf(page), 1UL << 62, 1, 16);
  // A sanitizer adds a warning of its own.
  for (const auto& line : linesOf(GetCapturedStderr())) {
    EXPECT_NE(line.find("AddressSanitizer"), std::string::npos) << line;
  }
  EXPECT_EQ(printer.bytes(), "");
  EXPECT_TRUE(wren_test::savedImages(folder.spool()).empty());
}

TEST_F(PagePipeline, CancelledPageIsNotSent) {
  volatile std::sig_atomic_t flag = 1;
  for (const auto type : {None, QVDithering}) {
    RecordingPrinter printer;
    printer.setHalftoneType(type);
    printer.setCancelFlag(&flag);
    const auto printed = print(printer, tenRows({3}));
    EXPECT_EQ(printed.bytes, "");
    EXPECT_TRUE(printed.images.empty());
  }
}

}  // namespace
