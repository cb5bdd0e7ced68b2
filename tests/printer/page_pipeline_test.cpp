// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pipeline of a page through the printer object: commands, messages and debug images
// against the reference implementation, and pages small enough to check by eye. The dots
// themselves are tested in page_dots_test.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <memory>

#include "tests/printer/page_options.h"
#include "tests/printer/printed_page.h"
#include "tests/printer/recording_printer.h"
#include "tests/printer/test_pages.h"
#include "tests/reference/cximage.h"
#include "tests/reference/page.h"
#include "tests/support/filter_job.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/same_bytes.h"

#ifdef __SANITIZE_ADDRESS__
// A sanitizer ends the program at a request that no system could fulfil, unless told otherwise.
extern "C" const char* __asan_default_options();
const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif

namespace {

using reference::PageOptions;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using wren_test::bytesOf;
using wren_test::Dice;
using wren_test::fromHex;
using wren_test::hexOf;
using wren_test::kStencil;
using wren_test::linesOf;
using wren_test::printedPages;
using wren_test::printWithProduct;
using wren_test::RecordingPrinter;
using wren_test::sameBytes;
using wren_test::TemporaryFolder;
using wren_test::TestPage;

using Lines = std::vector<std::string>;

void expectLikeTheReference(const PageOptions& options, const TestPage& page) {
  SCOPED_TRACE(describe(options, page));
  const auto expected = reference::printImage(options, page.pixels.data(), page.bytesPerLine,
                                              page.height, page.width);
  for (const bool packed : {false, true}) {
    SCOPED_TRACE(packed ? "packed" : "bytes");
    const auto printed = printWithProduct(options, page, packed);
    EXPECT_TRUE(sameBytes(reference::bytesOf(expected.commands), printed.bytes));
    EXPECT_EQ(printed.log, expected.log);
    ASSERT_EQ(printed.dumps.size(), expected.dumps.size());
    for (std::size_t i = 0; i < printed.dumps.size(); ++i) {
      EXPECT_EQ(printed.dumps[i].kind, expected.dumps[i].kind);
      EXPECT_TRUE(sameBytes(expected.dumps[i].bytes, printed.dumps[i].bytes));
    }
  }
}

// Pages and options drawn from `count` seeds; stops at the first seed that differs.
void compareSeeds(unsigned firstSeed, unsigned count, unsigned mostPadding) {
  for (unsigned seed = firstSeed; seed < firstSeed + count && !testing::Test::HasFailure();
       ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    const TestPage page = randomPage(dice, mostPadding == 0 ? 0 : 1 + dice.below(mostPadding));
    expectLikeTheReference(randomOptions(dice, page, static_cast<int>(dice.below(9))), page);
  }
}

TEST(PagePipeline, OfRandomPagesIsThatOfTheReference) {
  compareSeeds(1, 1500, 0);
}

TEST(PagePipeline, OfRandomPagesWithPaddedRowsIsThatOfTheReference) {
  compareSeeds(30001, 600, 9);
}

TEST(PagePipeline, EveryTrimOfEveryKindOfPage) {
  for (const int type : {0, kStencil}) {
    for (const int trim : {0, 1, 2, 4, 8, 10, 15, 255}) {
      PageOptions options;
      options.halftoneType = type;
      options.removeBlankEdges = static_cast<std::uint8_t>(trim);
      for (const auto& [top, bottom] :
           {std::pair{0UL, 0UL}, {0UL, 9UL}, {1UL, 0UL}, {3UL, 6UL}, {9UL, 0UL}, {5UL, 5UL}}) {
        expectLikeTheReference(options, wren_test::rampLevels(9, 10, top, bottom));
      }
    }
  }
}

// The counts are taken on the page as received and applied to the rotated page.
TEST(PagePipeline, TrimsARotatedPageByTheCountsOfThePageAsReceived) {
  for (const int type : {0, 3, kStencil}) {
    PageOptions options;
    options.halftoneType = type;
    options.rotate180 = true;
    options.removeBlankEdges = 15;
    expectLikeTheReference(options, wren_test::rampLevels(16, 20, 6, 1));
  }
}

TEST(PagePipeline, SmallAndOddPages) {
  for (int type = 0; type <= kStencil; ++type) {
    PageOptions options;
    options.halftoneType = type;
    options.removeBlankEdges = 15;
    for (unsigned long width = 1; width <= 17; ++width) {
      expectLikeTheReference(options, wren_test::noiseLevels(width, 1 + width % 5, 3));
    }
    expectLikeTheReference(options, wren_test::noiseLevels(575, 3, 4));
  }
}

TEST(PagePipeline, PagesOfOneLevel) {
  for (const int type : {0, 1, 7, kStencil}) {
    for (const int level : {0, 1, 0x7F, 0xFF}) {
      PageOptions options;
      options.halftoneType = type;
      expectLikeTheReference(options,
                             wren_test::flatLevels(8, 8, static_cast<std::uint8_t>(level)));
    }
  }
}

// --- Read off by eye ---

TestPage tenRows(const std::vector<unsigned long>& rowsWithDots) {
  TestPage page = wren_test::flatLevels(4, 10, 0);
  for (const auto row : rowsWithDots) std::fill_n(page.pixels.begin() + 4 * row, 4, 255);
  return page;
}

Lines rowsPrinted(const PageOptions& options, const TestPage& page) {
  const auto bytes = printWithProduct(options, page).bytes;
  return printedPages({bytes.begin(), bytes.end()}).at(0).rows;
}

PageOptions trimming(int bits) {
  PageOptions options;
  options.removeBlankEdges = static_cast<std::uint8_t>(bits);
  return options;
}

TEST(PagePipeline, OneRowOfDotsIsPrintedWithTheBlankRowAboveIt) {
  EXPECT_EQ(rowsPrinted(trimming(15), tenRows({3})), (Lines{"....", "####"}));
  EXPECT_EQ(printWithProduct(trimming(15), tenRows({3})).log,
            (Lines{"DEBUG:printImage: p(ADDRESS), width(4), height(10), w(4), topBlanks(2), "
                   "bottomBlanks(4), h_fixed(2)"}));
}

// Printed output depends on row 0 not being tested: its dots are cut off here.
TEST(PagePipeline, DotsOfRowZeroAloneAboveBlankRowsAreCutOff) {
  EXPECT_EQ(rowsPrinted(trimming(15), tenRows({0, 5})), (Lines{"....", "####"}));
}

TEST(PagePipeline, PageWithoutDotsIsPrintedAtFullHeight) {
  EXPECT_EQ(rowsPrinted(trimming(15), tenRows({})), Lines(10, "...."));
}

// The dots are in row 3 of ten, and after the rotation in row 6, but rows 2 and 3 are kept.
TEST(PagePipeline, RotationDoesNotMoveTheTrim) {
  PageOptions options = trimming(15);
  options.rotate180 = true;
  EXPECT_EQ(rowsPrinted(options, tenRows({3})), (Lines{"....", "...."}));
}

TEST(PagePipeline, TrimmingNeedsTheBitOfValue8) {
  const struct {
    int bits;
    std::size_t rows;
  } cases[] = {{0, 10}, {1, 10}, {2, 10}, {4, 10}, {5, 10}, {8, 4}, {10, 2}, {15, 2}};
  for (const auto& row : cases) {
    EXPECT_EQ(rowsPrinted(trimming(row.bits), tenRows({3})).size(), row.rows) << row.bits;
  }
}

TEST(PagePipeline, SecondStreamReceivesTheSamePage) {
  wren_test::CaptureFile second;
  RecordingPrinter printer;
  printer.getOutputStreams().push_back(second.stream());
  const TestPage page = wren_test::noiseLevels(20, 20, 9);
  CaptureStderr();
  printer.printImage(page.pixels.data(), 20, 20, 20);
  GetCapturedStderr();
  const std::string bytes = printer.bytes();
  EXPECT_EQ(bytes.size(), 2U + 3 * (5 + 20 + 3));
  EXPECT_TRUE(sameBytes(bytes, second.bytes()));
}

TEST(PagePipeline, LeavesThePageAsReceivedUnchanged) {
  for (const auto type : {Burkes, QVDithering}) {
    RecordingPrinter printer;
    printer.setHalftoneType(type);
    printer.setBrightness(20);
    printer.setRotate180Print(true);
    const TestPage page = wren_test::noiseLevels(30, 20, 3);
    const reference::Bytes before = page.pixels;
    CaptureStderr();
    printer.printImage(page.pixels.data(), 30, 20, 30);
    GetCapturedStderr();
    EXPECT_TRUE(sameBytes(before, page.pixels));
  }
}

TEST(PagePipeline, KeepsTheTemplateOfTheSecondImage) {
  const TemporaryFolder folder;
  RecordingPrinter printer(folder.path());
  const TestPage page = tenRows({});
  CaptureStderr();
  printer.printImage(page.pixels.data(), 4, 10, 4);
  GetCapturedStderr();
  EXPECT_EQ(printer.imageFormat(), folder.path().string() + "/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp");
}

TEST(PagePipeline, SavesNoImageWhileTheyAreOff) {
  const TemporaryFolder folder;
  RecordingPrinter printer(folder.path());
  EXPECT_TRUE(printer.setDebugImageFolder({}));
  const TestPage page = tenRows({3});
  CaptureStderr();
  printer.printImage(page.pixels.data(), 4, 10, 4);
  EXPECT_EQ(linesOf(GetCapturedStderr()).size(), 1U);  // and no word of an image
  EXPECT_FALSE(printer.bytes().empty());
  EXPECT_TRUE(wren_test::savedImages(folder.path()).empty());
}

TEST(PagePipeline, StencilPageLogsItsStrideRoundedUpToFour) {
  PageOptions options;
  options.halftoneType = kStencil;
  const Lines log = printWithProduct(options, wren_test::noiseLevels(9, 4, 3)).log;
  ASSERT_GE(log.size(), 2U);
  EXPECT_EQ(log[0], "DEBUG:QVDithered with stride(12), BytesPerLine(9)");
  EXPECT_EQ(log[1], "DEBUG:PageProcess filled anser with length(36)!");
}

TEST(PagePipeline, PageThatDoesNotFitIntoMemoryLeavesNoTrace) {
  const TemporaryFolder folder;
  RecordingPrinter printer(folder.path());
  CaptureStderr();
  const std::string page(16, '\x01');
  printer.printImage(bytesOf(page), 1UL << 62, 1, 16);
  // A sanitizer adds a warning of its own.
  for (const auto& line : linesOf(GetCapturedStderr())) {
    EXPECT_NE(line.find("AddressSanitizer"), std::string::npos) << line;
  }
  EXPECT_EQ(printer.bytes(), "");
  EXPECT_TRUE(wren_test::savedImages(folder.path()).empty());
}

TEST(PagePipeline, CancelledPageIsNotSent) {
  for (const auto type : {None, QVDithering}) {
    const TemporaryFolder folder;
    RecordingPrinter printer(folder.path());
    printer.setHalftoneType(type);
    printer.setCancelCheck({[](const void*) { return true; }, nullptr});
    const TestPage page = tenRows({3});
    printer.printImage(page.pixels.data(), 4, 10, 4);
    EXPECT_EQ(printer.bytes(), "");
    EXPECT_TRUE(wren_test::savedImages(folder.path()).empty());
  }
}

// --- A page printed from within doPrintImage ---

// Prints a larger page before the one that it was given.
class NestingPrinter : public RecordingPrinter {
 public:
  void doPrintImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                    unsigned long width) override {
    if (!isNested_) {
      isNested_ = true;
      const std::vector<unsigned char> inner(100 * 100, 0x40);
      printImage(inner.data(), 100, 100, 100);
    }
    pages.push_back(reference::Bytes(data, data + height * width));
    static_cast<void>(bytesPerLine);
  }
  std::vector<reference::Bytes> pages;

 private:
  bool isNested_ = false;
};

TEST(PagePipeline, PagePrintedFromWithinAnotherLeavesThatOneWhole) {
  const TestPage outer = wren_test::noiseLevels(20, 10, 1);
  NestingPrinter printer;
  printer.setHalftoneType(Stucki);
  CaptureStderr();
  printer.printImage(outer.pixels.data(), 20, 10, 20);
  printer.printImage(outer.pixels.data(), 20, 10, 20);
  GetCapturedStderr();
  ASSERT_EQ(printer.pages.size(), 3U);
  EXPECT_EQ(printer.pages[0].size(), 10000U);
  EXPECT_TRUE(sameBytes(printer.pages[2], printer.pages[1]));
}

// --- PageProcess ---

TEST(PageProcess, RewritesTheStencilFlagFromTheHalftoneType) {
  const std::string page(4, '\x10');
  unsigned char out[4];
  CaptureStderr();
  for (int type = -1; type <= 9; ++type) {
    RecordingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(type));
    printer.setUseQVDithering(type != 8);
    printer.PageProcess(None, bytesOf(page), 2, 2, 2, out);
    EXPECT_EQ(printer.getUseQVDithering(), type == 8) << type;
  }
  GetCapturedStderr();
}

reference::Bytes processed(DitherType halftoneType, DitherType method, const TestPage& page) {
  RecordingPrinter printer;
  printer.setHalftoneType(halftoneType);
  reference::Bytes out(page.pixels.size(), 0x55);
  CaptureStderr();
  EXPECT_EQ(
      printer.PageProcess(method, page.pixels.data(), static_cast<int>(page.bytesPerLine),
                          static_cast<int>(page.width), static_cast<int>(page.height), out.data()),
      static_cast<long>(out.size()));
  GetCapturedStderr();
  return out;
}

// The dots of the bitmap's dither by its method number, one pixel at a time.
reference::Bytes bitmapDots(int method, const TestPage& page) {
  reference::CxImage image;
  const auto width = static_cast<std::uint32_t>(page.width);
  const auto height = static_cast<std::uint32_t>(page.height);
  EXPECT_TRUE(image.CreateFromArray(page.pixels.data(), width, height, 8, width, false));
  image.Dither(method);
  reference::Bytes dots;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      dots.push_back(image.GetPixelIndex(x, y) != 0 ? 255 : 0);
    }
  }
  return dots;
}

// Printed output depends on it: a type runs the bitmap's method of the same number.
TEST(PageProcess, TypesRunTheMethodsOfTheirNumber) {
  const TestPage page = wren_test::noiseLevels(16, 16, 6);
  for (int type = 0; type <= 7; ++type) {
    const auto halftone = static_cast<DitherType>(type);
    EXPECT_TRUE(sameBytes(bitmapDots(type, page), processed(halftone, halftone, page), 16)) << type;
  }
}

TEST(PageProcess, RunsTheClassicMethodOfItsArgumentNotOfTheHalftoneType) {
  const TestPage page = wren_test::noiseLevels(16, 16, 6);
  for (int method = 0; method <= 7; ++method) {
    const auto other = static_cast<DitherType>((method + 3) % 8);
    EXPECT_TRUE(sameBytes(bitmapDots(method, page),
                          processed(other, static_cast<DitherType>(method), page), 16))
        << method;
  }
}

TEST(PageProcess, RunsTheStencilMethodByTheHalftoneTypeNotByItsArgument) {
  const TestPage page = wren_test::noiseLevels(16, 16, 6);
  // Number 8 among the classic methods is Floyd-Steinberg.
  EXPECT_TRUE(sameBytes(bitmapDots(8, page), processed(None, QVDithering, page), 16));
  PageOptions stencil;
  stencil.halftoneType = kStencil;
  reference::Bytes expected(page.pixels.size());
  Lines log;
  reference::PageProcess(stencil, 0, page.pixels.data(), 16, 16, 16, expected, log);
  EXPECT_TRUE(sameBytes(expected, processed(QVDithering, None, page), 16));
}

TEST(PageProcess, WritesNothingForAWidthOrHeightBelowOne) {
  const std::string page(16, '\xFF');
  for (const auto type : {None, QVDithering}) {
    for (const auto& [bytesPerLine, width, height] : {std::tuple{4, 0, 4},
                                                      {4, 4, 0},
                                                      {4, -1, 4},
                                                      {4, 4, -1},
                                                      {-4, -4, -4},
                                                      {4, -2147483647, 1},
                                                      {0, 1, 1},
                                                      {-1, 1, 1}}) {
      RecordingPrinter printer;
      printer.setHalftoneType(type);
      printer.setRotate180Print(true);
      std::string out(16, '\x55');
      CaptureStderr();
      printer.PageProcess(type, bytesOf(page), bytesPerLine, width, height,
                          reinterpret_cast<unsigned char*>(out.data()));
      GetCapturedStderr();
      EXPECT_EQ(out, std::string(16, '\x55')) << width << " x " << height;
    }
  }
}

TEST(PageProcess, SaysThatAPageWithoutRowsCannotBecomeABitmap) {
  for (const auto type : {None, QVDithering}) {
    RecordingPrinter printer;
    printer.setHalftoneType(type);
    unsigned char byte = 0x55;
    CaptureStderr();
    EXPECT_EQ(printer.PageProcess(type, &byte, 1, 1, 0, &byte), 0);
    EXPECT_EQ(linesOf(GetCapturedStderr())[0], "CRIT:cximage.CreateFromArray with grey failed!");
  }
}

// Half a GiB of addresses mapped to 16 MiB of memory, so that a huge page costs little.
class WideMemory {
 public:
  static constexpr std::size_t kBytes = std::size_t{1} << 29;

  WideMemory() {
    EXPECT_EQ(ftruncate(fileno(file_.get()), kPiece), 0);
    start_ = static_cast<unsigned char*>(
        mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    for (std::size_t at = 0; at < kBytes; at += kPiece) {
      EXPECT_NE(mmap(start_ + at, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED,
                     fileno(file_.get()), 0),
                MAP_FAILED);
    }
  }
  WideMemory(const WideMemory&) = delete;
  WideMemory& operator=(const WideMemory&) = delete;
  ~WideMemory() { munmap(start_, kBytes); }
  unsigned char* data() { return start_; }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 24;
  wren::FilePtr file_{std::tmpfile()};
  unsigned char* start_ = nullptr;
};

// The bits of 2^29 pixels do not fit into 32 bits, so the bitmap refuses them.
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

// --- GrayToMono ---

TEST(GrayToMono, PacksTenPixelsIntoTwoBytes) {
  RecordingPrinter printer;
  std::string buffer = fromHex("01 00 00 00 00 00 00 01 01 00");
  CaptureStderr();
  EXPECT_EQ(printer.GrayToMono(10, 1, reinterpret_cast<unsigned char*>(buffer.data())), 2);
  EXPECT_EQ(GetCapturedStderr(), "DEBUG:GrayToMono, bpl(10), h(1), skipPixels(0), wb(10)\n");
  EXPECT_EQ(hexOf(buffer.substr(0, 2)), "81 80");
}

TEST(GrayToMono, PacksPagesLikeTheReference) {
  for (unsigned seed = 1; seed <= 500; ++seed) {
    Dice dice(seed);
    TestPage page = randomPage(dice, 0);
    reference::Bytes expected = page.pixels;
    const auto bytesPerLine = static_cast<int>(page.bytesPerLine);
    const auto height = static_cast<int>(page.height);
    const unsigned skip = dice.below(static_cast<unsigned>(page.bytesPerLine) + 3);
    RecordingPrinter printer;
    printer.setSkipRightPixels(skip);
    Lines log;
    const int count = reference::GrayToMono(bytesPerLine, height, expected.data(), skip, log);
    CaptureStderr();
    EXPECT_EQ(printer.GrayToMono(bytesPerLine, height, page.pixels.data()), count);
    EXPECT_EQ(linesOf(GetCapturedStderr()), log);
    ASSERT_TRUE(sameBytes(expected, page.pixels)) << "seed " << seed;
  }
}

}  // namespace
