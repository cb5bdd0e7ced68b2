// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/stencil_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"
#include "tests/support/vector_levels.h"

namespace wren::stencil {
namespace {

Bytes dotsOf(const QVImage& page) {
  Bytes dots(page.byteCount());
  EXPECT_TRUE(
      stencilPage(page.data, page.width, page.width, page.height, {dots.data(), page.width}));
  return dots;
}

testing::AssertionResult equalsReference(const QVImage& page) {
  return sameBytes(referenceDots(page), dotsOf(page), page.width);
}

// Rows of `page` with `stride - page.width` bytes of `filler` behind each.
Bytes withStride(const Bytes& page, int width, int stride, std::uint8_t filler) {
  const auto height = page.size() / static_cast<std::size_t>(width);
  Bytes rows(static_cast<std::size_t>(stride) * height, filler);
  for (std::size_t y = 0; y < height; ++y) {
    std::copy_n(page.data() + y * static_cast<std::size_t>(width), width,
                rows.data() + y * static_cast<std::size_t>(stride));
  }
  return rows;
}

class StencilPage : public wren_test::VectorLevelTest {};
INSTANTIATE_TEST_SUITE_P(Level, StencilPage, testing::ValuesIn(wren::machineVectorLevels()),
                         wren_test::vectorLevelTestName);

TEST_P(StencilPage, EqualsTheReferenceOnEverySize) {
  onEveryPage(1, [](const QVImage& page, PageMaker&) { EXPECT_TRUE(equalsReference(page)); });
}

TEST_P(StencilPage, EqualsTheReferenceOnWidePagesWithUniformParts) {
  PageMaker maker(3);
  for (const PageKind kind : kPageKinds) {
    QVImage page = maker.make(kind, 576, 120);
    for (int y = 20; y < 70; ++y) std::fill_n(page.data + y * 576 + 100, 300, 255);
    for (int y = 90; y < 112; ++y) std::fill_n(page.data + y * 576, 576, 0);
    EXPECT_TRUE(equalsReference(page)) << kind;
  }
}

TEST_P(StencilPage, LeavesBytesBeyondTheWidthUnread) {
  const QVImage page = noisePage(37, 41, 1);
  const Bytes expected = withStride(referenceDots(page), 37, 40, 9);
  for (int stride = 37; stride < 42; ++stride) {
    const Bytes source = withStride(bytesOf(page), 37, stride, 200);
    Bytes result(expected.size(), 9);
    EXPECT_TRUE(stencilPage(source.data(), stride, 37, 41, {result.data(), 40}));
    EXPECT_TRUE(sameBytes(expected, result, 40)) << "source stride " << stride;
  }
}

TEST_P(StencilPage, RunsInPlace) {
  PageMaker maker(2);
  for (const int padding : {0, 1, 11}) {
    for (const PageKind kind : kPageKinds) {
      for (int height = 1; height <= 60; ++height) {
        const int stride = 53 + padding;
        const QVImage page = maker.make(kind, 53, height);
        Bytes rows = withStride(bytesOf(page), 53, stride, 7);
        EXPECT_TRUE(stencilPage(rows.data(), stride, 53, height, {rows.data(), stride}));
        ASSERT_TRUE(sameBytes(withStride(referenceDots(page), 53, stride, 7), rows, stride))
            << kind << ", " << height << " rows, stride " << stride;
      }
    }
  }
}

TEST_P(StencilPage, PageWithoutPixelsIsDoneAtOnce) {
  std::uint8_t byte = 7;
  EXPECT_TRUE(stencilPage(&byte, 1, 0, 5, {&byte, 1}));
  EXPECT_TRUE(stencilPage(&byte, 1, 5, 0, {&byte, 1}));
  EXPECT_EQ(byte, 7);
}

// Cancels the job at the check after `left` checks.
struct Countdown {
  int left;
  int asked = 0;

  CancelCheck check() {
    return {[](const void* context) {
              auto* self = const_cast<Countdown*>(static_cast<const Countdown*>(context));
              ++self->asked;
              return self->left-- == 0;
            },
            this};
  }
};

// 600 rows: three checks while the histogram is built, then one for each block of 16 rows. The
// block before the check may lack the ends of its rows.
TEST_P(StencilPage, StopsWhenItIsCancelled) {
  const QVImage page = noisePage(30, 600, 4);
  const Bytes dots = referenceDots(page);
  for (int left = 0; left < 8; ++left) {
    Countdown countdown{left};
    Bytes result(page.byteCount(), 9);
    EXPECT_FALSE(stencilPage(page.data, 30, 30, 600, {result.data(), 30}, countdown.check()));
    EXPECT_EQ(countdown.asked, left + 1);
    const int done = std::max(left - 4, 0) * 16 * 30;
    const int begun = std::max(left - 3, 0) * 16 * 30;
    EXPECT_TRUE(sameBytes(Bytes(dots.begin(), dots.begin() + done),
                          Bytes(result.begin(), result.begin() + done), 30))
        << left;
    EXPECT_TRUE(
        sameBytes(Bytes(result.size() - begun, 9), Bytes(result.begin() + begun, result.end()), 30))
        << left;
  }
}

TEST_P(StencilPage, ChecksForCancellationAtLeastOnceIn256Rows) {
  const QVImage page = uniformPage(20, 2000, 255);
  Countdown countdown{-1};
  Bytes result(page.byteCount());
  EXPECT_TRUE(stencilPage(page.data, 20, 20, 2000, {result.data(), 20}, countdown.check()));
  EXPECT_GE(countdown.asked, 2 * 2000 / 256);
}

long numberFrom(const char* variable, long fallback) {
  const char* text = std::getenv(variable);
  return text == nullptr ? fallback : std::strtol(text, nullptr, 10);
}

// WREN_RANDOM_PAGES=<count> runs that many pages, WREN_RANDOM_SEED=<number> other ones.
TEST_P(StencilPage, EqualsTheReferenceOnRandomPages) {
  PageMaker maker(static_cast<unsigned>(numberFrom("WREN_RANDOM_SEED", 20261120)));
  const long pages = numberFrom("WREN_RANDOM_PAGES", 1000);
  ASSERT_GT(pages, 0);
  for (long i = 0; i < pages; ++i) {
    const PageKind kind = maker.anyKind();
    const int width = 1 + maker.below(100);
    const int height = 1 + maker.below(40);
    ASSERT_TRUE(equalsReference(maker.make(kind, width, height)))
        << "page " << i << ", " << kind << ", " << width << " x " << height;
  }
  RecordProperty("pages", static_cast<int>(pages));
}

}  // namespace
}  // namespace wren::stencil
