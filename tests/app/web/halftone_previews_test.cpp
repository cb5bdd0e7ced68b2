// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/halftone_previews.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/preview/png_reading.h"

namespace wren::app::web {
namespace {

constexpr unsigned kWidthPx = 384;
const PageTarget kTarget = {.headWidthPx = kWidthPx, .paperWidthPx = 464};

GreyPages flat(std::vector<unsigned> heightsPx, std::uint8_t level) {
  GreyPages pages{kWidthPx, std::move(heightsPx), {}};
  pages.levels.assign(std::size_t{kWidthPx} * pages.rows(), level);
  return pages;
}

// A grey ramp with a black border, so that no edge of the page is blank.
GreyPages ramp(unsigned heightPx) {
  GreyPages pages = flat({heightPx}, 255);
  for (unsigned y = 0; y < heightPx; ++y) {
    for (unsigned x = 0; x < kWidthPx; ++x) {
      const bool isBorder = y == 0 || y + 1 == heightPx || x == 0 || x + 1 == kWidthPx;
      pages.levels[std::size_t{y} * kWidthPx + x] =
          isBorder ? 0 : static_cast<std::uint8_t>(x * 255 / kWidthPx);
    }
  }
  return pages;
}

JobSettings withoutFeed() {
  JobSettings settings;
  settings.core.docCutType = 0;
  return settings;
}

TEST(HalftonePreviews, ShowTheDotsOfTheJobThatWouldBePrinted) {
  const GreyPages pages = ramp(80);
  const auto previews = drawPreviews(pages, withoutFeed(), kTarget);
  for (int method = 0; method < kHalftoneCount; ++method) {
    SCOPED_TRACE(method);
    JobSettings settings = withoutFeed();
    settings.core.halftoneType = static_cast<DitherType>(method);
    const std::string bytes = printedBytes(pages, settings, kTarget);
    const auto reading =
        escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    const Preview& preview = previews.at(static_cast<std::size_t>(method));
    EXPECT_EQ(preview.bytes, bytes.size());
    const GreyPicture png = readPngBytes(preview.png);
    ASSERT_EQ(png.width, kWidthPx);
    ASSERT_EQ(png.height, reading.paper.allRows().end);
    std::vector<std::uint8_t> dots(kWidthPx);
    for (unsigned y = 0; y < png.height; ++y) {
      renderRow(reading.paper, y, dots);
      for (unsigned x = 0; x < kWidthPx; ++x) {
        ASSERT_EQ(png.pixels.at(y * kWidthPx + x), dots[x] == 0 ? 255 : 0) << x << ", " << y;
      }
    }
  }
}

TEST(HalftonePreviews, DifferBetweenAllMethods) {
  const auto previews = drawPreviews(ramp(80), withoutFeed(), kTarget);
  for (std::size_t a = 0; a < previews.size(); ++a) {
    for (std::size_t b = a + 1; b < previews.size(); ++b) {
      EXPECT_NE(previews.at(a).png, previews.at(b).png) << a << " and " << b;
    }
  }
}

struct Share {
  std::uint8_t level;
  double black;
};

TEST(HalftonePreviews, TellTheShareOfBlackAndTheLengthOfThePaper) {
  // 240 rows at 203 dpi are 30.03 mm; a page adds its feed of 24 units, half a dot row each.
  for (const Share& share : {Share{0, 1.0}, Share{255, 0.0}}) {
    GreyPages pages = flat({240}, share.level);
    JobSettings settings = withoutFeed();
    settings.core.pageType = 1;  // blank edges are kept
    const Preview preview = previewOf(printedBytes(pages, settings, kTarget), kWidthPx);
    EXPECT_NEAR(preview.blackShare, share.black, 0.06) << int{share.level};
    EXPECT_GE(preview.lengthMm, 30.0) << int{share.level};
    EXPECT_LE(preview.lengthMm, 33.0) << int{share.level};
  }
}

TEST(HalftonePreviews, GrowDarkerWithBrightness) {
  const GreyPages pages = flat({80}, 128);
  JobSettings light = withoutFeed();
  light.core.brightness = -20;
  JobSettings dark = withoutFeed();
  dark.core.brightness = 20;
  const auto lighter = drawPreviews(pages, light, kTarget);
  const auto darker = drawPreviews(pages, dark, kTarget);
  for (std::size_t method = 0; method < lighter.size(); ++method) {
    EXPECT_LT(lighter.at(method).blackShare, darker.at(method).blackShare) << method;
  }
}

TEST(HalftonePreviews, PrintEachPageOfADocument) {
  JobSettings settings = withoutFeed();
  settings.core.pageCutType = 1;
  const std::string bytes = printedBytes(flat({40, 60}, 0), settings, kTarget);
  const auto reading =
      escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  EXPECT_EQ(reading.totals.pages, 2U);
  EXPECT_EQ(reading.totals.cuts, 2U);
}

TEST(GreyPagesTest, AreCompleteWithAllTheirRows) {
  GreyPages pages = flat({3, 4}, 0);
  EXPECT_TRUE(pages.isComplete());
  pages.levels.pop_back();
  EXPECT_FALSE(pages.isComplete());
  EXPECT_FALSE((GreyPages{kWidthPx, {}, {}}.isComplete()));
  EXPECT_FALSE((GreyPages{kWidthPx, {0}, {}}.isComplete()));
}

}  // namespace
}  // namespace wren::app::web
