// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/qv_image.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>
#include <type_traits>

#include "tests/stencil/grey_page.h"

namespace wren::stencil {
namespace {

QV_IMG_COLOR layoutOf(int value) {
  return static_cast<QV_IMG_COLOR>(value);
}

TEST(QVImageLayout, FixesTheBytesPerPixel) {
  struct Row {
    int layout;
    int channels;
  };
  for (const Row row :
       {Row{0, 1}, Row{1, 3}, Row{2, 3}, Row{3, 4}, Row{4, 4}, Row{7, 4}, Row{-1, 4}}) {
    const QVImage image(2, 3, layoutOf(row.layout));
    EXPECT_EQ(image.channels, row.channels) << "layout " << row.layout;
    EXPECT_EQ(image.byteCount(), 6U * static_cast<unsigned>(row.channels));
    EXPECT_EQ(image.colorType, layoutOf(row.layout));
  }
}

TEST(QVImageLayout, EnumerationIsSignedWith32Bits) {
  static_assert(std::is_same_v<std::underlying_type_t<QV_IMG_COLOR>, std::int32_t>);
  EXPECT_EQ(QV_IMG_GRAY, 0);
  EXPECT_EQ(QV_IMG_BGR, 1);
  EXPECT_EQ(QV_IMG_RGB, 2);
  EXPECT_EQ(QV_IMG_BGRA, 3);
  EXPECT_EQ(QV_IMG_RGBA, 4);
}

TEST(QVImageLayout, FieldsHaveTheRequiredOrder) {
  static_assert(std::is_standard_layout_v<QVImage>);
  EXPECT_EQ(offsetof(QVImage, width), 0U);
  EXPECT_EQ(offsetof(QVImage, height), 4U);
  EXPECT_EQ(offsetof(QVImage, channels), 8U);
  EXPECT_EQ(offsetof(QVImage, colorType), 12U);
  EXPECT_EQ(offsetof(QVImage, data), 16U);
}

TEST(QVImage, TakesACopyOfThePixels) {
  Bytes pixels = {1, 2, 3, 4, 5, 6};
  const QVImage image(1, 2, QV_IMG_RGB, pixels.data());
  pixels.assign(6, 9);
  EXPECT_EQ(bytesOf(image), (Bytes{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(image.width, 1);
  EXPECT_EQ(image.height, 2);
}

TEST(QVImage, CopiesAreIndependent) {
  const QVImage image = greyPage(2, 1, {7, 8});
  QVImage copy(image);
  copy.data[0] = 1;
  EXPECT_EQ(bytesOf(image), (Bytes{7, 8}));
  EXPECT_EQ(bytesOf(copy), (Bytes{1, 8}));
}

TEST(QVImage, CopyTakesTheChannelCountAsItIs) {
  QVImage image(2, 1, QV_IMG_RGBA, Bytes{1, 2, 3, 4, 5, 6, 7, 8}.data());
  image.colorType = QV_IMG_GRAY;
  const QVImage copy(image);
  EXPECT_EQ(copy.channels, 4);
  EXPECT_EQ(copy.colorType, QV_IMG_GRAY);
  EXPECT_EQ(bytesOf(copy), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(QVImage, AssignmentReplacesTheBuffer) {
  const QVImage image = greyPage(2, 1, {7, 8});
  QVImage target(5, 5, QV_IMG_RGB);
  QVImage& result = (target = image);
  EXPECT_EQ(&result, &target);
  EXPECT_NE(target.data, image.data);
  EXPECT_EQ(bytesOf(target), (Bytes{7, 8}));
  EXPECT_EQ(target.width, 2);
  EXPECT_EQ(target.height, 1);
  EXPECT_EQ(target.channels, 1);
  EXPECT_EQ(target.colorType, QV_IMG_GRAY);
}

// stencil_memory_test shows that the destructor frees the pixels.
TEST(QVImage, ReleaseClearsAllButTheLayout) {
  QVImage image(3, 2, QV_IMG_BGRA);
  image.release();
  EXPECT_EQ(image.width, 0);
  EXPECT_EQ(image.height, 0);
  EXPECT_EQ(image.channels, 0);
  EXPECT_EQ(image.data, nullptr);
  EXPECT_EQ(image.colorType, QV_IMG_BGRA);
}

TEST(QVImage, MayBeEmpty) {
  const QVImage image(0, 0, QV_IMG_GRAY, nullptr);
  EXPECT_EQ(image.byteCount(), 0U);
  const QVImage copy(image);
  EXPECT_EQ(copy.byteCount(), 0U);
}

TEST(QVImage, NegativeDimensionsFailLikeAnAllocation) {
  EXPECT_THROW(QVImage(-1, 5, QV_IMG_GRAY), std::bad_alloc);
  EXPECT_THROW(QVImage(5, -1, QV_IMG_RGB, Bytes(15).data()), std::bad_alloc);
}

TEST(QVImage, FailedAssignmentLeavesTheTargetUsable) {
  QVImage source = greyPage(1, 1, {3});
  QVImage target = greyPage(2, 1, {7, 8});
  source.width = -1;
  EXPECT_THROW(target = source, std::bad_alloc);
  EXPECT_EQ(bytesOf(target), (Bytes{7, 8}));
  source.width = 1;
}

TEST(QVImage, IsNotMoved) {
  QVImage image = greyPage(1, 1, {3});
  const QVImage other = static_cast<QVImage&&>(image);
  EXPECT_NE(image.data, nullptr);
  EXPECT_NE(image.data, other.data);
}

}  // namespace
}  // namespace wren::stencil
