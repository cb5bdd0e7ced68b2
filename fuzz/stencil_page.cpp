// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil halftone against the reference implementation, on small pages of any
// layout, and the threshold alone on histograms that no small page can have.

#include "fuzz/input.h"
#include "stencil/moment_threshold.h"
#include "stencil/tattoo_dithering.h"
#include "tests/reference/stencil.h"

namespace {

using fuzz::check;

constexpr std::uint32_t kLargestCount = 2147483647;
constexpr std::uint8_t kHistogramMode = 255;

// Each entry of the input adds to one level. The sum is at most the pixels of the largest page.
void compareThresholds(fuzz::Input& input) {
  wren::stencil::Histogram histogram{};
  std::uint32_t total = 0;
  while (input.left() > 0) {
    const std::uint8_t level = input.byte();
    const std::uint32_t count = std::min(input.word(), kLargestCount - total);
    histogram[level] += static_cast<std::int32_t>(count);
    total += count;
  }
  const int expected =
      reference::thresh_global_moments_from_counts(histogram.data(), static_cast<int>(total));
  check(wren::stencil::momentThreshold(histogram) == expected,
        "the threshold is that of the reference");
}

void comparePages(int width, int layout, fuzz::Input& input) {
  const auto color = static_cast<QV_IMG_COLOR>(layout);
  const int channels = wren::stencil::bytesPerPixel(color);
  const std::size_t rowBytes = std::size_t(width) * std::size_t(channels);
  const std::size_t rows = rowBytes == 0 ? 0 : input.left() / rowBytes;
  const int height = static_cast<int>(rows);
  const std::vector<std::uint8_t> pixels = input.bytes(rows * rowBytes);

  QVImage page(width, height, color, pixels.data());
  const QVImage dots = qvTattooDithering(page);
  check(std::equal(pixels.begin(), pixels.end(), page.data), "the source is only read");
  check(dots.width == width && dots.height == height, "the result has the size of the page");
  check(dots.channels == 1 && dots.colorType == QV_IMG_GRAY, "the result is grey");

  reference::QVImage source(width, height, static_cast<reference::QV_IMG_COLOR>(layout),
                            pixels.data());
  const reference::QVImage expected = reference::qvTattooDithering(source);
  const std::size_t count = std::size_t(width) * std::size_t(height);
  for (std::size_t i = 0; i < count; ++i) {
    check(dots.data[i] == 0 || dots.data[i] == 255, "the result holds only 0 and 255");
    check(dots.data[i] == expected.data[i], "the dots are those of the reference");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::uint8_t mode = input.byte();
  if (mode == kHistogramMode) {
    compareThresholds(input);
  } else {
    const int width = mode % 72;
    comparePages(width, static_cast<int>(input.below(6)) - 1, input);
  }
  return 0;
}
