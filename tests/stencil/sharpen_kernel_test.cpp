// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharpen_kernel.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/stencil/reference_image.h"

namespace wren::stencil {
namespace {

TEST(SharpenKernel, EqualsTheReferenceForEveryPairOfLevels) {
  QVImage levels(256, 256, QV_IMG_GRAY);
  QVImage blurred(256, 256, QV_IMG_GRAY);
  for (int i = 0; i < 256 * 256; ++i) {
    levels.data[i] = static_cast<std::uint8_t>(i / 256);
    blurred.data[i] = static_cast<std::uint8_t>(i % 256);
  }
  const std::vector<float> a(levels.data, levels.data + levels.byteCount());
  const std::vector<float> b(blurred.data, blurred.data + blurred.byteCount());
  Bytes out(a.size());
  sharpen(a.data(), b.data(), out.data(), 0, static_cast<int>(out.size()));
  // A weight of 300 percent.
  const auto expected = reference::add_Weighted(toReference(levels), toReference(blurred), 3.0F);
  EXPECT_TRUE(sameBytes(bytesOf(expected), out, 256));
}

TEST(SharpenKernel, WritesItsRangeOnly) {
  const std::vector<float> row(64, 7.0F);
  Bytes out(64, 99);
  sharpen(row.data(), row.data(), out.data(), 16, 48);
  for (std::size_t x = 0; x < out.size(); ++x) {
    EXPECT_EQ(out[x], x >= 16 && x < 48 ? 7 : 99) << x;
  }
}

}  // namespace
}  // namespace wren::stencil
