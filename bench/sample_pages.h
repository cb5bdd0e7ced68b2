// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Draws the pages that the benchmarks print: receipts (lines of text, a grey
// logo, a barcode, much white) and photos (smooth shades with sensor noise).
// The same seed gives the same pages on every machine; nothing here judges
// whether a page is printed correctly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

/// A small generator of repeatable noise (SplitMix64, public domain algorithm).
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

/// A grey page: one byte per pixel, 0 bare paper to 255 full ink, rows of
/// `width` bytes, top row first.
struct Page {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> pixels;

  Page(int pageWidth, int pageHeight);
  unsigned char* row(int y) { return pixels.data() + static_cast<std::size_t>(y) * width; }
};

/// Draws a receipt into the rows from `top` on, `rows` of them (cut off where
/// they do not suffice). The rows must be bare and the page at least 200 wide.
void drawReceipt(Page& page, int top, int rows, Noise& noise);

/// Fills the page with smooth shades of two scales and a little noise.
void drawPhoto(Page& page, Noise& noise);

}  // namespace bench
