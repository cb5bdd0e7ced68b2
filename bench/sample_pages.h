// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Draws the pages of the benchmarks: receipts (text, a grey logo, a bar code, mostly white) and
// photos (smooth gradients with noise). The same seed gives the same pages on every machine.
// Not for tests: nothing here says how a page must be printed.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wren::bench {

/// Pseudo-random numbers: SplitMix64 (Steele, Lea and Flood 2014), with a fixed seed.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : state_(seed) {}

  /// The next 64 bits.
  std::uint64_t next();
  /// A number from 0 to `limit` - 1; `limit` is at least 1.
  int below(int limit);

 private:
  std::uint64_t state_;
};

/// A grey page: one byte per pixel, 0 paper to 255 full ink, rows of `width` bytes, top row first.
struct Page {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;

  Page(int pageWidth, int pageHeight);
  std::uint8_t* row(int y) { return pixels.data() + static_cast<std::size_t>(y) * width; }
};

/// Draws a receipt into rows `top` to `top + rows - 1`; what does not fit is cut off. The rows must
/// be 0 and the page at least 200 pixels wide.
void drawReceipt(Page& page, int top, int rows, Noise& noise);

/// Fills the page with gradients of two scales and a little noise.
void drawPhoto(Page& page, Noise& noise);

}  // namespace wren::bench
