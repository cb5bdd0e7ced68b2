// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone.h"

#include <gtest/gtest.h>

#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"

namespace wren::stencil {
namespace {

QVImage pixelOf(int layout, const Bytes& bytes) {
  return {1, 1, static_cast<QV_IMG_COLOR>(layout), bytes.data()};
}

TEST(CvtGray, FollowsTheOrderOfTheColours) {
  struct Row {
    int layout;
    int grey;
  };
  const Bytes firstByteOnly = {255, 0, 0, 0};
  for (const Row row : {Row{QV_IMG_RGBA, 76}, Row{QV_IMG_BGRA, 29}, Row{QV_IMG_RGB, 76},
                        Row{QV_IMG_BGR, 29}, Row{7, 76}, Row{-1, 76}}) {
    const QVImage grey = cvtGray(pixelOf(row.layout, firstByteOnly));
    EXPECT_EQ(grey.data[0], row.grey) << "layout " << row.layout;
  }
}

TEST(CvtGray, EqualsTheReferenceInEveryLayout) {
  PageMaker maker(3);
  for (int layout = 0; layout <= 5; ++layout) {
    for (int size = 1; size <= 40; ++size) {
      const Bytes bytes = bytesOf(maker.make(PageKind::kNoise, 4 * size, size));
      const QVImage page(size, size, static_cast<QV_IMG_COLOR>(layout), bytes.data());
      const Bytes expected = bytesOf(reference::cvtGray(toReference(page)));
      ASSERT_TRUE(sameBytes(expected, bytesOf(cvtGray(page)), static_cast<std::size_t>(size)))
          << "layout " << layout;
    }
  }
}

TEST(CvtGray, WhiteStaysWhiteInEveryLayout) {
  for (int layout = 0; layout <= 4; ++layout) {
    const QVImage grey = cvtGray(pixelOf(layout, Bytes(4, 255)));
    EXPECT_EQ(grey.data[0], 255) << "layout " << layout;
  }
}

TEST(CvtGray, IgnoresAlpha) {
  EXPECT_EQ(bytesOf(cvtGray(pixelOf(QV_IMG_RGBA, {10, 20, 30, 0}))),
            bytesOf(cvtGray(pixelOf(QV_IMG_RGBA, {10, 20, 30, 255}))));
}

TEST(CvtGray, ResultIsAGreyImageOfTheSameSize) {
  const QVImage grey = cvtGray(QVImage(2, 1, QV_IMG_RGB, Bytes(6).data()));
  EXPECT_EQ(grey.width, 2);
  EXPECT_EQ(grey.height, 1);
  EXPECT_EQ(grey.channels, 1);
  EXPECT_EQ(grey.colorType, QV_IMG_GRAY);
}

TEST(CvtGray, TakesItsStepFromTheChannelsAndItsOrderFromTheLayout) {
  QVImage page(2, 1, QV_IMG_RGBA, Bytes{1, 2, 3, 4, 5, 6, 7, 8}.data());
  page.colorType = QV_IMG_GRAY;
  EXPECT_EQ(bytesOf(cvtGray(page)), (Bytes{1, 5}));
}

TEST(CvtGray, OfAnEmptyImageIsEmpty) {
  EXPECT_EQ(cvtGray(QVImage(0, 0, QV_IMG_RGB)).byteCount(), 0U);
}

TEST(ThreshGlobalMoments, EqualsTheReferenceOnEverySize) {
  onEveryPage(1, [](const QVImage& page, PageMaker&) {
    EXPECT_EQ(thresh_global_moments(page), reference::thresh_global_moments(toReference(page)));
  });
}

TEST(ThreshGlobalMoments, OfAnEmptyImageIsTheFallback) {
  EXPECT_EQ(thresh_global_moments(QVImage(0, 0, QV_IMG_GRAY)), 128);
}

TEST(EnhPiecewiseGamma, AppliesTheCurveInPlace) {
  QVImage page = greyPage(4, 2, {0, 1, 2, 63, 64, 65, 128, 255});
  const std::uint8_t* buffer = page.data;
  enh_piecewise_gamma(page, 64, 0.85F, 0.7F);
  EXPECT_EQ(page.data, buffer);
  EXPECT_EQ(bytesOf(page), (Bytes{0, 1, 3, 63, 64, 68, 152, 255}));
}

TEST(EnhPiecewiseGamma, LeavesWhatIsBelowTheImage) {
  QVImage page = greyPage(2, 3, {128, 128, 128, 128, 128, 128});
  page.height = 2;
  enh_piecewise_gamma(page, 64, 0.85F, 0.7F);
  page.height = 3;
  EXPECT_EQ(bytesOf(page), (Bytes{152, 152, 152, 152, 128, 128}));
}

}  // namespace
}  // namespace wren::stencil
