// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/stencil_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "stencil/tattoo_dithering.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/test_pages.h"

namespace {

Bytes literalDots(const QVImage& page) {
  reference::QVImage source(page.width, page.height, reference::QV_IMG_GRAY, page.data);
  const reference::QVImage result = reference::qvTattooDithering(source);
  return {result.data, result.data + page.byteCount()};
}

Bytes withStride(const QVImage& page, int stride, std::uint8_t filler) {
  Bytes rows(static_cast<std::size_t>(stride) * static_cast<std::size_t>(page.height), filler);
  for (int y = 0; y < page.height; ++y) {
    std::copy_n(page.data + y * page.width, page.width, rows.data() + y * stride);
  }
  return rows;
}

TEST(StencilPage, WorksWithAnyStrides) {
  PageMaker maker(1);
  for (int extra = 0; extra < 5; ++extra) {
    const QVImage page = maker.make(PageKind::kNoise, 37, 41);
    const QVImage dots = greyPage(37, 41, literalDots(page));
    const Bytes source = withStride(page, 37 + extra, 200);
    Bytes result(static_cast<std::size_t>(40 * 41), 9);
    EXPECT_TRUE(stencil_page(source.data(), 37 + extra, 37, 41, result.data(), 40));
    EXPECT_EQ(result, withStride(dots, 40, 9)) << extra;
  }
}

TEST(StencilPage, MayOverwriteThePageItReads) {
  PageMaker maker(2);
  for (const PageKind kind : kPageKinds) {
    for (int height = 1; height <= 60; height += 1) {
      QVImage page = maker.make(kind, 53, height);
      const Bytes expected = literalDots(page);
      EXPECT_TRUE(stencil_page(page.data, 53, 53, height, page.data, 53));
      ASSERT_EQ(bytesOf(page), expected) << height;
    }
  }
}

TEST(StencilPage, WidePagesWithBlankPartsEqualTheLiteralVersion) {
  PageMaker maker(3);
  for (const PageKind kind : kPageKinds) {
    QVImage page = maker.make(kind, 576, 120);
    for (int y = 20; y < 70; ++y) std::fill_n(page.data + y * 576 + 100, 300, 255);
    for (int y = 90; y < 112; ++y) std::fill_n(page.data + y * 576, 576, 0);
    const Bytes expected = literalDots(page);
    EXPECT_EQ(bytesOf(qvTattooDithering(page)), expected);
  }
}

TEST(StencilPage, PageWithoutPixelsIsDone) {
  std::uint8_t byte = 7;
  EXPECT_TRUE(stencil_page(&byte, 1, 0, 5, &byte, 1));
  EXPECT_TRUE(stencil_page(&byte, 1, 5, 0, &byte, 1));
  EXPECT_EQ(byte, 7);
}

struct Countdown {
  int left;
  int asked;
};

bool countsDown(void* context) {
  auto* countdown = static_cast<Countdown*>(context);
  ++countdown->asked;
  return countdown->left-- > 0;
}

TEST(StencilPage, StopsWhenItIsTold) {
  PageMaker maker(4);
  const QVImage page = maker.make(PageKind::kNoise, 30, 600);
  const Bytes expected = literalDots(page);
  for (int left = 0; left < 8; ++left) {
    Countdown countdown{left, 0};
    Bytes result(page.byteCount(), 9);
    EXPECT_FALSE(stencil_page(page.data, 30, 30, 600, result.data(), 30, countsDown, &countdown));
    EXPECT_EQ(countdown.asked, left + 1);
    EXPECT_EQ(result.back(), 9);
    // Three questions while counting, then one for each block of 16 rows.
    const std::size_t written = left < 3 ? 0 : static_cast<std::size_t>(left - 3) * 16 * 30;
    for (std::size_t i = 0; i < result.size(); ++i) {
      ASSERT_EQ(result[i], i < written ? expected[i] : 9) << left << " at " << i;
    }
  }
}

TEST(StencilPage, AsksOftenEnough) {
  PageMaker maker(5);
  const QVImage page = maker.make(PageKind::kReceipt, 20, 2000);
  Countdown countdown{1'000'000, 0};
  Bytes result(page.byteCount());
  EXPECT_TRUE(stencil_page(page.data, 20, 20, 2000, result.data(), 20, countsDown, &countdown));
  EXPECT_GE(countdown.asked, 2 * 2000 / 256);
}

// WREN_RANDOM_PAGES=<count> runs that many pages; WREN_RANDOM_SEED starts elsewhere.
long numberFrom(const char* name, long fallback) {
  const char* text = std::getenv(name);
  return text == nullptr ? fallback : std::strtol(text, nullptr, 10);
}

TEST(StencilPage, RandomPagesEqualTheLiteralVersion) {
  PageMaker maker(static_cast<unsigned>(numberFrom("WREN_RANDOM_SEED", 20261120)));
  const long pages = numberFrom("WREN_RANDOM_PAGES", 1000);
  ASSERT_GT(pages, 0);
  for (long i = 0; i < pages; ++i) {
    const PageKind kind = kPageKinds[maker.next(std::size(kPageKinds))];
    const int width = 1 + static_cast<int>(maker.next(100));
    const int height = 1 + static_cast<int>(maker.next(40));
    QVImage page = maker.make(kind, width, height);
    ASSERT_EQ(bytesOf(qvTattooDithering(page)), literalDots(page))
        << "page " << i << ", kind " << static_cast<int>(kind) << ", " << width << " x " << height;
  }
  RecordProperty("pages", static_cast<int>(pages));
}

}  // namespace
