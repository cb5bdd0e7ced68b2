// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Documents through the filters of CUPS and rastertowren, as `wren print` sends them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "tests/print/job_files.h"
#include "tests/print/print_chain.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/same_bytes.h"

namespace {

using print_chain::outputOf;
using print_chain::PrintChain;
using wren_test::SameBytes;

// The fixed threshold: levels from 129 are dots.
std::vector<std::uint8_t> thresholded(const reference::Page& page) {
  std::vector<std::uint8_t> dots(page.pixels.size());
  std::transform(page.pixels.begin(), page.pixels.end(), dots.begin(),
                 [](std::uint8_t level) { return level > 128 ? 1 : 0; });
  return dots;
}

// The dots of the page as decoded by tests/support, which is independent of escpos/.
std::vector<std::uint8_t> dotsOfSecondDecoder(const print_chain::Printed& printed) {
  const auto pages =
      wren_test::printedPages(std::string(printed.bytes.begin(), printed.bytes.end()));
  std::vector<std::uint8_t> dots;
  if (pages.size() != 1) return dots;
  for (const auto& row : pages[0].rows) {
    for (const char dot : row) dots.push_back(dot == '#' ? 1 : 0);
  }
  return dots;
}

void writePgm(const std::string& path, const job_files::Picture& picture) {
  std::ofstream out(path, std::ios::binary);
  out << "P5 " << picture.width << " " << picture.height << " 255\n";
  for (const auto dot : picture.dots) out.put(static_cast<char>(dot != 0 ? 0 : 255));
}

struct Example {
  const char* file;
  int paper;
  unsigned widthPx;
};

void PrintTo(const Example& example, std::ostream* out) {
  *out << example.file << " " << example.paper;
}

class EachExample : public PrintChain, public testing::WithParamInterface<Example> {};

TEST_P(EachExample, DecodesToTheThresholdedRaster) {
  const auto printed =
      print(GetParam().file, GetParam().paper, {{"PageType", "1"}, {"HalftoneType", "None"}});
  ASSERT_EQ(printed.raster.size(), 1U);
  const auto reading = wren::escpos::readAll(printed.bytes);
  EXPECT_TRUE(reading.problems.empty());
  const auto pictures = job_files::printedPages(reading.paper, printed.raster);
  ASSERT_EQ(pictures.size(), 1U);
  const auto dots = thresholded(printed.raster[0]);
  EXPECT_GT(std::count(dots.begin(), dots.end(), 1), 1000) << "the page is nearly blank";
  EXPECT_THAT(pictures[0].dots, SameBytes(dots));
  EXPECT_THAT(dotsOfSecondDecoder(printed), SameBytes(dots));
}

TEST_P(EachExample, ArrivesAsWideAsThePrintHead) {
  const auto printed = print(GetParam().file, GetParam().paper, {});
  ASSERT_EQ(printed.raster.size(), 1U);
  EXPECT_EQ(printed.raster[0].width, GetParam().widthPx);
  EXPECT_EQ(printed.raster[0].bytesPerLine, GetParam().widthPx);
  EXPECT_EQ(printed.raster[0].bitsPerPixel, 8U);
  EXPECT_EQ(printed.raster[0].hwResolutionX, 203U);
}

TEST_P(EachExample, PrintsTheBytesOfTheReferenceImplementation) {
  for (const char* halftone : {"None", "FloydSteinberg", "Ordered", "Burkes", "Stucki",
                               "JarvisJudiceNinke", "Sierra", "StevensonArce", "QVDithering"}) {
    const auto printed = print(GetParam().file, GetParam().paper, {{"HalftoneType", halftone}});
    EXPECT_THAT(printed.bytes, SameBytes(job_files::expectedBytes(printed.options, printed.raster)))
        << halftone;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Examples, EachExample,
    testing::Values(Example{"receipt.pdf", 80, 576}, Example{"receipt-58mm.pdf", 58, 384},
                    Example{"photo.png", 80, 576}, Example{"drawing.png", 80, 576},
                    Example{"order.txt", 80, 576}, Example{"order.txt", 112, 832}));

struct CodeReading {
  const char* file;
  int paper;
};

void PrintTo(const CodeReading& reading, std::ostream* out) {
  *out << reading.file << " " << reading.paper;
}

class PrintedCodes : public PrintChain, public testing::WithParamInterface<CodeReading> {};

TEST_P(PrintedCodes, CanBeScannedFromThePaper) {
  const auto printed = print(GetParam().file, GetParam().paper, {{"PageType", "1"}});
  const auto pictures =
      job_files::printedPages(wren::escpos::readAll(printed.bytes).paper, printed.raster);
  ASSERT_EQ(pictures.size(), 1U);
  writePgm(pathOf("paper.pgm"), pictures[0]);
  const auto codes = outputOf("zbarimg -q " + pathOf("paper.pgm") + " 2>/dev/null");
  EXPECT_THAT(codes, testing::HasSubstr("CODE-128:WREN-000042\n"));
  EXPECT_THAT(codes, testing::HasSubstr("QR-Code:https://example.org/r/000042\n"));
}

INSTANTIATE_TEST_SUITE_P(Receipts, PrintedCodes,
                         testing::Values(CodeReading{"receipt.pdf", 80},
                                         CodeReading{"receipt-58mm.pdf", 58},
                                         CodeReading{"receipt.pdf", 112}));

TEST_F(PrintChain, CopiesArriveAsPages) {
  const auto printed = print("receipt.pdf", 80, {}, 3);
  ASSERT_EQ(printed.raster.size(), 3U);
  EXPECT_THAT(printed.bytes, SameBytes(job_files::expectedBytes(printed.options, printed.raster)));
}

TEST_F(PrintChain, AReceiptIsUprightAndAtTheTop) {
  const auto printed = print("receipt.pdf", 80, {});
  ASSERT_EQ(printed.raster.size(), 1U);
  const auto& page = printed.raster[0];
  const auto first =
      std::find_if(page.pixels.begin(), page.pixels.end(), [](auto level) { return level != 0; });
  const auto row = static_cast<std::uint32_t>(first - page.pixels.begin()) / page.bytesPerLine;
  EXPECT_LT(row, 40U) << "the logo begins 3 mm below the edge";
}

TEST_F(PrintChain, AWidePictureIsNotRotated) {
  const auto printed = print("photo.png", 80, {});
  ASSERT_EQ(printed.raster.size(), 1U);
  EXPECT_EQ(printed.raster[0].height, 432U);
}

// CUPS would apply the option as its own "brightness", which renders the picture at 10 %.
TEST_F(PrintChain, BrightnessOfAPictureReachesTheFilterOnly) {
  const auto plain = print("photo.png", 80, {{"HalftoneType", "Burkes"}});
  const auto dark = print("photo.png", 80, {{"HalftoneType", "Burkes"}, {"Brightness", "10"}});
  ASSERT_EQ(dark.raster.size(), 1U);
  EXPECT_THAT(dark.raster[0].pixels, SameBytes(plain.raster.at(0).pixels));
  EXPECT_THAT(dark.bytes, SameBytes(job_files::expectedBytes(dark.options, dark.raster)));
  EXPECT_THAT(dark.bytes, testing::Not(SameBytes(plain.bytes)));
}

TEST_F(PrintChain, APageWiderThanThePaperKeepsItsMiddle) {
  const auto printed = print("receipt.pdf", 80, {{"PageSize", "Custom.100x150mm"}});
  ASSERT_EQ(printed.raster.size(), 1U);
  ASSERT_GT(printed.raster[0].width, 576U);
  EXPECT_THAT(printed.bytes, SameBytes(job_files::expectedBytes(printed.options, printed.raster)));
  EXPECT_EQ(wren::escpos::readAll(printed.bytes).paper.widthDots, 576U);
}

}  // namespace
