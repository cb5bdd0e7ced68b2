// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages and page options for the tests of the printer, drawn from seeds.

#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/reference/page.h"

namespace wren_test {

/// A page as a printer object receives it.
struct TestPage {
  unsigned long width = 0;
  unsigned long height = 0;
  unsigned long bytesPerLine = 0;
  reference::Bytes pixels;  // height x bytesPerLine
};

/// The number of the stencil method among the halftone types.
inline constexpr int kStencil = 8;

/// Seeded choices, the same on every system.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  unsigned below(unsigned n) { return static_cast<unsigned>(engine_() % n); }
  bool coin() { return below(2) == 1; }
  int oneOf(const std::vector<int>& values) {
    return values[below(static_cast<unsigned>(values.size()))];
  }

 private:
  std::mt19937 engine_;
};

/// A page of one level.
inline TestPage flatLevels(unsigned long width, unsigned long height, std::uint8_t level) {
  return {width, height, width, reference::Bytes(width * height, level)};
}

/// A page of noise with `padding` bytes of noise behind each row.
inline TestPage noiseLevels(unsigned long width, unsigned long height, unsigned seed,
                            unsigned long padding = 0) {
  Dice dice(seed);
  TestPage page = {width, height, width + padding, reference::Bytes((width + padding) * height)};
  for (std::uint8_t& level : page.pixels) level = static_cast<std::uint8_t>(dice.below(256));
  return page;
}

/// Levels that rise along the rows, with blank rows above and below.
inline TestPage rampLevels(unsigned long width, unsigned long height, unsigned long top,
                           unsigned long bottom) {
  TestPage page = flatLevels(width, height, 0);
  for (unsigned long y = top; y + bottom < height; ++y) {
    for (unsigned long x = 0; x < width; ++x) {
      page.pixels[y * width + x] = static_cast<std::uint8_t>(x * 37 + y * 11);
    }
  }
  return page;
}

inline std::uint8_t levelOfKind(unsigned kind, Dice& dice, unsigned x) {
  switch (kind) {
    case 0:
      return static_cast<std::uint8_t>(dice.below(256));  // noise
    case 1:
      return dice.below(12) == 0 ? 255 : 0;  // a few dots
    case 2:
      return static_cast<std::uint8_t>(120 + dice.below(16));  // close to the middle
    case 3:
      return static_cast<std::uint8_t>(x * 9);  // a ramp
    default:
      return dice.coin() ? 255 : 0;
  }
}

/// A page of one of several kinds, with up to three blank rows at its top and bottom.
/// @param padding bytes of each row beyond its width.
inline TestPage randomPage(Dice& dice, unsigned padding, unsigned maxWidth = 40,
                           unsigned maxHeight = 24) {
  TestPage page;
  page.width = 1 + dice.below(maxWidth);
  page.height = 1 + dice.below(maxHeight);
  page.bytesPerLine = page.width + padding;
  page.pixels = reference::Bytes(page.bytesPerLine * page.height, 0);
  const unsigned kind = dice.below(6);
  const unsigned top = dice.below(4);
  const unsigned bottom = dice.below(4);
  for (unsigned y = top; y + bottom < page.height; ++y) {
    for (unsigned x = 0; x < page.bytesPerLine; ++x) {
      page.pixels[y * page.bytesPerLine + x] = levelOfKind(kind, dice, x);
    }
  }
  return page;
}

inline reference::PageOptions randomOptions(Dice& dice, const TestPage& page, int halftoneType) {
  reference::PageOptions options;
  options.halftoneType = halftoneType;
  options.brightness = dice.oneOf({0, 0, 0, 1, -1, 20, -20, 50, -50, 100, -100});
  options.contrast = dice.oneOf({0, 0, 0, 1, -1, 50, -50, 100, -100});
  options.negative = dice.coin();
  options.mirror = dice.coin();
  options.rotate180 = dice.coin();
  options.removeBlankEdges = static_cast<std::uint8_t>(dice.oneOf({0, 15, 15, 2, 8, 10, 5}));
  if (dice.coin()) options.skipRightPixels = dice.below(static_cast<unsigned>(page.width));
  options.hwResolutionX = static_cast<std::uint32_t>(dice.oneOf({100, 101, 203}));
  return options;
}

inline std::string describe(const reference::PageOptions& options, const TestPage& page) {
  return "type " + std::to_string(options.halftoneType) + ", brightness " +
         std::to_string(options.brightness) + ", contrast " + std::to_string(options.contrast) +
         (options.negative ? ", negative" : "") + (options.mirror ? ", mirror" : "") +
         (options.rotate180 ? ", rotated" : "") + ", trim " +
         std::to_string(options.removeBlankEdges) + ", skip " +
         std::to_string(options.skipRightPixels) + ", page " + std::to_string(page.width) + " (" +
         std::to_string(page.bytesPerLine) + ") x " + std::to_string(page.height);
}

}  // namespace wren_test
