// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil halftone against the reference implementation, on small pages of any
// layout, on larger ones of a few kinds of rows (`kFieldsMark`), and the threshold alone on
// histograms that no small page can have.

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

std::size_t rowBytesOf(int width, int layout) {
  const int channels = wren::stencil::bytesPerPixel(static_cast<QV_IMG_COLOR>(layout));
  return std::size_t(width) * std::size_t(channels);
}

// Rows like the one before, of one level, or of many; each several times.
std::vector<std::uint8_t> pixelsFromFields(std::size_t rowBytes, std::size_t rows,
                                           fuzz::Input& input) {
  std::vector<std::uint8_t> pixels;
  std::vector<std::uint8_t> row(rowBytes, 255);
  while (pixels.size() < rows * rowBytes) {
    const std::uint32_t kind = input.below(4);
    if (kind == 1) row.assign(rowBytes, input.byte());
    if (kind >= 2) row = input.filling(rowBytes);
    for (std::uint32_t times = 1 + input.below(32); times > 0; --times) {
      pixels.insert(pixels.end(), row.begin(), row.end());
    }
  }
  pixels.resize(rows * rowBytes);
  return pixels;
}

void comparePages(int width, int height, int layout, const std::vector<std::uint8_t>& pixels) {
  const auto color = static_cast<QV_IMG_COLOR>(layout);
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

// As many rows as the input has bytes for.
void compareSmallPage(int width, fuzz::Input& input) {
  const int layout = static_cast<int>(input.below(6)) - 1;
  const std::size_t rowBytes = rowBytesOf(width, layout);
  const std::size_t rows = rowBytes == 0 ? 0 : input.left() / rowBytes;
  comparePages(width, static_cast<int>(rows), layout, input.bytes(rows * rowBytes));
}

// Wide and tall enough for blocks of rows without an edge of the page, and for tiles within them.
void compareLargePage(fuzz::Input& input) {
  constexpr int kLayouts[] = {QV_IMG_GRAY, QV_IMG_GRAY, QV_IMG_GRAY, QV_IMG_BGRA};
  const int width = static_cast<int>(1 + input.byte() + 256 * input.below(3));
  const int height = static_cast<int>(1 + input.below(80));
  const int layout = kLayouts[input.below(4)];
  const std::size_t rowBytes = rowBytesOf(width, layout);
  comparePages(width, height, layout,
               pixelsFromFields(rowBytes, static_cast<std::size_t>(height), input));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  if (input.takeFieldsMark()) {
    compareLargePage(input);
    return 0;
  }
  const std::uint8_t mode = input.byte();
  if (mode == kHistogramMode) {
    compareThresholds(input);
  } else {
    compareSmallPage(mode % 72, input);
  }
  return 0;
}
