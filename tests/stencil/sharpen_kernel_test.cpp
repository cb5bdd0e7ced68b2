// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/sharpen_kernel.h"

#include <gtest/gtest.h>

#include <vector>

#include "stencil/blur_kernel.h"
#include "tests/stencil/reference_image.h"
#include "tests/support/vector_levels.h"

namespace wren::stencil {
namespace {

std::vector<std::int16_t> sixteenths(const QVImage& image) {
  std::vector<std::int16_t> row;
  for (std::size_t i = 0; i < image.byteCount(); ++i) {
    row.push_back(static_cast<std::int16_t>(image.data[i] << kLevelFractionBits));
  }
  return row;
}

class SharpenKernel : public wren_test::VectorLevelTest {};
INSTANTIATE_TEST_SUITE_P(Level, SharpenKernel, testing::ValuesIn(wren::machineVectorLevels()),
                         wren_test::vectorLevelTestName);

TEST_P(SharpenKernel, EqualsTheReferenceForEveryPairOfLevels) {
  QVImage levels(256, 256, QV_IMG_GRAY);
  QVImage blurred(256, 256, QV_IMG_GRAY);
  for (int i = 0; i < 256 * 256; ++i) {
    levels.data[i] = static_cast<std::uint8_t>(i / 256);
    blurred.data[i] = static_cast<std::uint8_t>(i % 256);
  }
  const std::vector<std::int16_t> a = sixteenths(levels);
  const std::vector<std::int16_t> b = sixteenths(blurred);
  Bytes out(a.size());
  sharpen(a.data(), b.data(), out.data(), 0, static_cast<int>(out.size()));
  // A weight of 300 percent.
  const auto expected = reference::add_Weighted(toReference(levels), toReference(blurred), 3.0F);
  EXPECT_TRUE(sameBytes(bytesOf(expected), out, 256));
}

TEST_P(SharpenKernel, WritesItsRangeOnly) {
  const std::vector<std::int16_t> row(64, 7 << kLevelFractionBits);
  Bytes out(64, 99);
  sharpen(row.data(), row.data(), out.data(), 16, 48);
  for (std::size_t x = 0; x < out.size(); ++x) {
    EXPECT_EQ(out[x], x >= 16 && x < 48 ? 7 : 99) << x;
  }
}

}  // namespace
}  // namespace wren::stencil
