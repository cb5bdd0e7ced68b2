// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Every stage against its literal version on pages of all small sizes.

#include <gtest/gtest.h>

#include "stencil/error_diffusion.h"
#include "stencil/gaussian.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"
#include "stencil/unsharp.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/test_pages.h"

namespace {

constexpr int kWidestPage = 70;
constexpr int kHighestPage = 40;

reference::QVImage literal(const QVImage& page) {
  return {page.width, page.height, static_cast<reference::QV_IMG_COLOR>(page.colorType), page.data};
}

Bytes bytesOf(const reference::QVImage& image) {
  return {image.data, image.data + std::ptrdiff_t{image.width} * image.height * image.channels};
}

// Runs `check` on one page of each kind and size.
template <typename Check>
void onEveryPage(const Check& check) {
  PageMaker maker(1);
  for (const PageKind kind : kPageKinds) {
    for (int width = 0; width <= kWidestPage; ++width) {
      for (int height = 1; height <= kHighestPage; ++height) {
        const QVImage page = maker.make(kind, width, height);
        ASSERT_TRUE(check(page, maker))
            << "kind " << static_cast<int>(kind) << ", " << width << " x " << height;
      }
    }
  }
}

TEST(StagesReference, RowPass) {
  double kernel[11];
  generateGaussianKernel1D(11, 3.0, kernel);
  onEveryPage([&](const QVImage& page, PageMaker&) {
    return ::bytesOf(convolve1D(page, kernel, 11, true)) ==
           bytesOf(reference::convolve1D(literal(page), kernel, 11, true));
  });
}

TEST(StagesReference, ColumnPass) {
  double kernel[11];
  generateGaussianKernel1D(11, 3.0, kernel);
  onEveryPage([&](const QVImage& page, PageMaker&) {
    return ::bytesOf(convolve1D(page, kernel, 11, false)) ==
           bytesOf(reference::convolve1D(literal(page), kernel, 11, false));
  });
}

TEST(StagesReference, GaussianOfOtherSizes) {
  onEveryPage([](const QVImage& page, PageMaker& maker) {
    const int size = 1 + 2 * static_cast<int>(maker.next(8));
    const double sigma = 0.5 + 0.25 * maker.next(20);
    return ::bytesOf(enh_gaussian_filter_fast(page, size, sigma)) ==
           bytesOf(reference::enh_gaussian_filter_fast(literal(page), size, sigma));
  });
}

TEST(StagesReference, DirectGaussian) {
  onEveryPage([](const QVImage& page, PageMaker& maker) {
    if (page.width % 7 != 0 || page.height % 5 != 0) return true;
    const int size = 1 + 2 * static_cast<int>(maker.next(4));
    return ::bytesOf(enh_gaussian_filter(page, size, 2.0, 1.25)) ==
           bytesOf(reference::enh_gaussian_filter(literal(page), size, 2.0, 1.25));
  });
}

TEST(StagesReference, UnsharpMask) {
  onEveryPage([](const QVImage& page, PageMaker&) {
    return ::bytesOf(enh_unsharp_mask(page, 300.0F, 11)) ==
           bytesOf(reference::enh_unsharp_mask(literal(page), 300.0F, 11));
  });
}

TEST(StagesReference, UnsharpMaskOfOtherAmounts) {
  onEveryPage([](const QVImage& page, PageMaker& maker) {
    const float amount = static_cast<float>(maker.next(2000)) / 3.0F - 200.0F;
    return ::bytesOf(enh_unsharp_mask(page, amount, 7)) ==
           bytesOf(reference::enh_unsharp_mask(literal(page), amount, 7));
  });
}

TEST(StagesReference, ErrorDiffusion) {
  onEveryPage([](const QVImage& page, PageMaker& maker) {
    const int threshold = static_cast<int>(maker.next(257)) - 1;
    return ::bytesOf(edf_cus(page, threshold)) ==
           bytesOf(reference::edf_cus(literal(page), threshold));
  });
}

TEST(StagesReference, ErrorDiffusionAtEveryThreshold) {
  PageMaker maker(2);
  for (int threshold = -1; threshold <= 255; ++threshold) {
    for (const PageKind kind : kPageKinds) {
      const QVImage page = maker.make(kind, 61, 45);
      ASSERT_EQ(::bytesOf(edf_cus(page, threshold)),
                bytesOf(reference::edf_cus(literal(page), threshold)))
          << threshold;
    }
  }
}

TEST(StagesReference, GreyAndThreshold) {
  onEveryPage([](const QVImage& page, PageMaker&) {
    reference::QVImage copy = literal(page);
    return page.width == 0 || thresh_global_moments(page) == reference::thresh_global_moments(copy);
  });
}

TEST(StagesReference, Curve) {
  for (int knee = 0; knee <= 255; ++knee) {
    Bytes levels(256);
    for (std::size_t i = 0; i < 256; ++i) levels[i] = static_cast<std::uint8_t>(i);
    QVImage page = greyPage(256, 1, levels);
    reference::QVImage copy = literal(page);
    enh_piecewise_gamma(page, knee, 0.85F, 0.7F);
    reference::enh_piecewise_gamma(copy, knee, 0.85F, 0.7F);
    ASSERT_EQ(::bytesOf(page), bytesOf(copy)) << knee;
  }
}

TEST(StagesReference, WholePipeline) {
  onEveryPage([](QVImage page, PageMaker&) {
    if (page.width == 0) return qvTattooDithering(page).byteCount() == 0;
    reference::QVImage copy = literal(page);
    return ::bytesOf(qvTattooDithering(page)) == bytesOf(reference::qvTattooDithering(copy));
  });
}

TEST(StagesReference, ColourPages) {
  PageMaker maker(3);
  for (int layout = 1; layout <= 5; ++layout) {
    for (int size = 1; size <= 40; ++size) {
      const Bytes bytes = ::bytesOf(maker.make(PageKind::kNoise, 4 * size, size));
      QVImage page(size, size, static_cast<QV_IMG_COLOR>(layout), bytes.data());
      reference::QVImage copy = literal(page);
      ASSERT_EQ(::bytesOf(cvtGray(page)), bytesOf(reference::cvtGray(copy))) << layout;
      ASSERT_EQ(::bytesOf(qvTattooDithering(page)), bytesOf(reference::qvTattooDithering(copy)));
    }
  }
}

}  // namespace
