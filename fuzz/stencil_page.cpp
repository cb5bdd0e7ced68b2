// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil halftone against its literal version, on small pages of any layout,
// and the threshold alone on level counts that no small page can have.

#include "fuzz/input.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"
#include "tests/reference/stencil.h"

namespace {

using fuzz::check;

constexpr std::uint32_t kLargestCount = 2147483647;
constexpr std::uint8_t kCountsMode = 255;

// Each entry of the input adds to one level; together they stay within what a page can hold.
void compareThresholds(fuzz::Input& input) {
  GreyCounts counts{};
  std::uint32_t total = 0;
  while (input.left() > 0) {
    const std::uint8_t level = input.byte();
    const std::uint32_t count = std::min(input.word(), kLargestCount - total);
    counts[level] += static_cast<std::int32_t>(count);
    total += count;
  }
  const int expected =
      reference::thresh_global_moments_from_counts(counts.data(), static_cast<int>(total));
  check(threshold_of_counts(counts) == expected, "the threshold is that of the literal version");
}

void comparePages(int width, int layout, fuzz::Input& input) {
  const auto color = static_cast<QV_IMG_COLOR>(layout);
  const int channels = qv_channels(color);
  const std::size_t rowBytes = std::size_t(width) * std::size_t(channels);
  const std::size_t rows = rowBytes == 0 ? 0 : input.left() / rowBytes;
  const int height = static_cast<int>(rows);
  const std::vector<std::uint8_t> pixels = input.bytes(rows * rowBytes);

  QVImage page(width, height, color, pixels.data());
  const QVImage dots = qvTattooDithering(page);
  check(std::equal(pixels.begin(), pixels.end(), page.data), "the source is only read");
  check(dots.width == width && dots.height == height, "the result has the size of the page");
  check(dots.channels == 1 && dots.colorType == QV_IMG_GRAY, "the result is grey");

  reference::QVImage literal(width, height, static_cast<reference::QV_IMG_COLOR>(layout),
                             pixels.data());
  const reference::QVImage expected = reference::qvTattooDithering(literal);
  const std::size_t count = std::size_t(width) * std::size_t(height);
  for (std::size_t i = 0; i < count; ++i) {
    check(dots.data[i] == 0 || dots.data[i] == 255, "the result holds only 0 and 255");
    check(dots.data[i] == expected.data[i], "the dots are those of the literal version");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::uint8_t mode = input.byte();
  if (mode == kCountsMode) {
    compareThresholds(input);
  } else {
    const int width = mode % 72;
    comparePages(width, static_cast<int>(input.below(6)) - 1, input);
  }
  return 0;
}
