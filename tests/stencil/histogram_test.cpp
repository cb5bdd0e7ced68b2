// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/histogram.h"

#include <gtest/gtest.h>

#include "tests/stencil/test_pages.h"

namespace wren::stencil {
namespace {

TEST(Histogram, CountsEveryPixelOnce) {
  onEveryPage(0, [](const QVImage& page, PageMaker&) {
    Histogram expected{};
    for (const std::uint8_t level : bytesOf(page)) ++expected[level];
    HistogramBuilder builder;
    for (int y = 0; y < page.height; ++y) builder.add(page.data + y * page.width, page.width);
    EXPECT_EQ(builder.histogram(), expected);
  });
}

}  // namespace
}  // namespace wren::stencil
