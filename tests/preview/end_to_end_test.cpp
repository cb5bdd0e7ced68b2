// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Raster pages through the real filter and wren-preview. The PNG must equal the
// dithered debug image of the filter pixel by pixel, except for the columns that
// the filter does not print.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "preview/file_run.h"
#include "tests/preview/png_reading.h"
#include "tests/support/bmp_file.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

namespace wren::preview {
namespace {

constexpr std::uint32_t kPageEndRows = 8;

struct Case {
  std::string halftone;
  std::vector<std::uint32_t> widths;  // one page each
  unsigned dpi = 203;
  std::string maxMediaWidthPt = "0";
  std::uint32_t printedColumns = 0;  // of each page; 0: all
};

// The dithered debug images of a run in page order.
std::vector<wren_test::BmpFile> ditheredImages(const wren_test::FilterResult& result) {
  std::vector<wren_test::BmpFile> images;
  for (const auto& image : result.images) {
    if (image.kind == "dithered") images.push_back(wren_test::readBmp(image.bytes));
  }
  return images;
}

// '#' for a dot. The file stores its rows from bottom to top, padded to four bytes.
std::string rowOf(const wren_test::BmpFile& image, std::uint32_t y, std::uint32_t columns) {
  const std::size_t rowBytes = (image.width + 31) / 32 * 4;
  const std::size_t start = (image.height - 1 - y) * rowBytes;
  std::string row;
  for (std::uint32_t x = 0; x < columns; ++x) {
    const auto byte = static_cast<unsigned char>(image.pixels.at(start + x / 8));
    row += (byte & (0x80U >> (x % 8))) == 0 ? '#' : '.';
  }
  return row;
}

std::string expectedText(const wren_test::BmpFile& image, std::uint32_t columns,
                         std::uint32_t columnWidth, std::uint32_t pictureWidth) {
  std::string text;
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(image.height); ++y) {
    std::string wide;
    for (const char dot : rowOf(image, y, columns)) wide += std::string(columnWidth, dot);
    wide.resize(pictureWidth, '.');
    text += wide + '\n';
  }
  const std::string blank = std::string(pictureWidth, '.') + '\n';
  for (std::uint32_t y = 0; y < kPageEndRows; ++y) text += blank;
  return text;
}

wren_test::FilterResult print(const Case& test) {
  std::vector<wren_test::RasterPage> pages;
  for (const std::uint32_t width : test.widths) {
    pages.push_back(wren_test::noisePage(width, 20 + width % 9, width, test.dpi));
  }
  wren_test::FilterJob job;
  job.ppd = wren_test::fullPpd(test.halftone, test.maxMediaWidthPt).text();
  job.raster = wren_test::rasterStream(wren_test::RasterKind::kV3, pages);
  return wren_test::runFilterJob(job);
}

void draw(const std::string& stream) {
  Options options;
  options.input = stream;
  options.split = true;
  testing::internal::CaptureStdout();
  EXPECT_EQ(runFile(options), 0);
  testing::internal::GetCapturedStdout();
}

class EndToEnd : public testing::TestWithParam<Case> {};

TEST_P(EndToEnd, ThePictureIsTheDitheredDebugImage) {
  const wren_test::FilterResult result = print(GetParam());
  ASSERT_TRUE(result.exited(0)) << result.err;
  const auto images = ditheredImages(result);
  ASSERT_EQ(images.size(), GetParam().widths.size());

  const wren_test::TemporaryFolder folder;
  draw(folder.write("job.prn", result.out).string());
  const std::uint32_t columnWidth = GetParam().dpi > 100 ? 1 : 2;
  for (std::size_t i = 0; i < images.size(); ++i) {
    const std::uint32_t columns =
        GetParam().printedColumns != 0 ? GetParam().printedColumns : images[i].width;
    ASSERT_EQ(images[i].width, static_cast<std::int32_t>(GetParam().widths[i]));
    const auto name = "job-" + std::to_string(i + 1) + ".png";
    const GreyPicture picture = readPng((folder.path() / name).string());
    ASSERT_GE(picture.width, columns * columnWidth);
    EXPECT_EQ(picture.text(), expectedText(images[i], columns, columnWidth, picture.width)) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, EndToEnd,
                         testing::Values(Case{"None", {61, 576}}, Case{"FloydSteinberg", {62, 575}},
                                         Case{"Ordered", {63}}, Case{"Burkes", {64, 17}},
                                         Case{"Stucki", {65}}, Case{"JarvisJudiceNinke", {66}},
                                         Case{"Sierra", {67, 9}}, Case{"StevensonArce", {68, 8}},
                                         Case{"QVDithering", {69, 70, 384}}),
                         [](const auto& test) { return test.param.halftone; });

INSTANTIATE_TEST_SUITE_P(Resolutions, EndToEnd,
                         testing::Values(Case{"Burkes", {40}, 100}, Case{"Burkes", {40}, 101},
                                         Case{"QVDithering", {33, 12}, 72}),
                         [](const auto& test) { return "At" + std::to_string(test.param.dpi); });

// 72 points are 203 columns at 203 dpi, so 48 and 1 columns are not printed.
INSTANTIATE_TEST_SUITE_P(OverWide, EndToEnd,
                         testing::Values(Case{"Burkes", {251, 204}, 203, "72", 203},
                                         Case{"QVDithering", {251}, 203, "72", 203}),
                         [](const auto& test) { return test.param.halftone; });

}  // namespace
}  // namespace wren::preview
