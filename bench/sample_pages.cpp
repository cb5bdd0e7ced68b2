// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/sample_pages.h"

#include <algorithm>

namespace wren::bench {
namespace {

constexpr int kCellWidth = 12;
constexpr int kCellHeight = 24;
constexpr int kGlyphs = 64;
constexpr int kGlyphColumns = 5;
constexpr int kGlyphRows = 8;
constexpr int kDot = 2;  // pixels per side of one dot of a glyph

// The part of a page that belongs to one receipt.
struct Strip {
  Page& page;
  int top;
  int rows;

  void ink(int x, int y, int level) const {
    if (x < 0 || x >= page.width || y < 0 || y >= rows) return;
    page.row(top + y)[x] = static_cast<std::uint8_t>(level);
  }
  void box(int x, int y, int width, int height, int level) const {
    for (int j = 0; j < height; ++j) {
      for (int i = 0; i < width; ++i) ink(x + i, y + j, level);
    }
  }
};

// A glyph number always gives the same shape, as in a font.
void drawGlyph(const Strip& strip, int x, int y, int glyph, int level) {
  Noise shape(static_cast<std::uint64_t>(glyph) + 1000);
  std::uint64_t bits = shape.next();
  bits &= shape.next();
  bits |= shape.next() & 0x0F0F0F0F0FU;
  for (int dot = 0; dot < kGlyphColumns * kGlyphRows; ++dot) {
    if ((bits >> dot & 1U) == 0) continue;
    strip.box(x + dot % kGlyphColumns * kDot, y + dot / kGlyphColumns * kDot, kDot, kDot, level);
  }
}

void drawWord(const Strip& strip, int column, int y, int length, int level, Noise& noise) {
  for (int i = 0; i < length; ++i) {
    drawGlyph(strip, (column + i) * kCellWidth, y, noise.below(kGlyphs), level);
  }
}

// An article on the left, its price on the right; one line in five is grey.
void drawTextLine(const Strip& strip, int y, Noise& noise) {
  const int columns = strip.page.width / kCellWidth;
  const int level = noise.below(5) == 0 ? 150 : 255;
  int column = noise.below(2);
  const int end = columns / 3 + noise.below(columns / 3);
  while (column < end) {
    const int length = 2 + noise.below(7);
    drawWord(strip, column, y, std::min(length, end - column), level, noise);
    column += length + 1;
  }
  drawWord(strip, columns - 7, y, 6, level, noise);
}

// A disc, darker towards its centre.
void drawLogo(const Strip& strip, int centreY, int radius) {
  const int centreX = strip.page.width / 2;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      const int square = dx * dx + dy * dy;
      if (square > radius * radius) continue;
      strip.ink(centreX + dx, centreY + dy,
                60 + (radius * radius - square) * 180 / (radius * radius));
    }
  }
}

void drawBarcode(const Strip& strip, int y, int height, Noise& noise) {
  int x = strip.page.width / 6;
  while (x < strip.page.width * 5 / 6) {
    const int bar = 2 + 2 * noise.below(3);
    strip.box(x, y, bar, height, 255);
    x += bar + 2 + 2 * noise.below(3);
  }
}

// Bilinear interpolation between random lattice points (value noise), in integers: every machine
// draws the same.
class Gradient {
 public:
  Gradient(const Page& page, int step, int depth, Noise& noise)
      : step_(step), columns_(page.width / step + 2) {
    const int rows = page.height / step + 2;
    knots_.reserve(static_cast<std::size_t>(columns_) * rows);
    for (int i = 0; i < columns_ * rows; ++i) knots_.push_back(noise.below(depth));
  }
  int at(int x, int y) const {
    const int column = x / step_;
    const int fx = x % step_;
    const int fy = y % step_;
    const int* upper = &knots_[static_cast<std::size_t>(y / step_) * columns_ + column];
    const int* lower = upper + columns_;
    const int above = upper[0] * (step_ - fx) + upper[1] * fx;
    const int below = lower[0] * (step_ - fx) + lower[1] * fx;
    return (above * (step_ - fy) + below * fy) / (step_ * step_);
  }

 private:
  int step_;
  int columns_;
  std::vector<int> knots_;
};

}  // namespace

std::uint64_t Noise::next() {
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
  return z ^ (z >> 31);
}

int Noise::below(int limit) {
  return static_cast<int>((next() >> 33) % static_cast<std::uint64_t>(limit));
}

Page::Page(int pageWidth, int pageHeight)
    : width(pageWidth),
      height(pageHeight),
      pixels(static_cast<std::size_t>(pageWidth) * static_cast<std::size_t>(pageHeight)) {}

void drawReceipt(Page& page, int top, int rows, Noise& noise) {
  const Strip strip{page, top, rows};
  constexpr int kMargin = 24;
  constexpr int kLogoRadius = 80;
  constexpr int kBarcodeHeight = 80;
  drawLogo(strip, kMargin + kLogoRadius, kLogoRadius);
  int y = 2 * kMargin + 2 * kLogoRadius;
  const int textEnd = rows - 2 * kMargin - kBarcodeHeight - kCellHeight;
  for (int line = 0; y < textEnd; ++line, y += kCellHeight) {
    if (line % 12 == 5) {
      strip.box(0, y + kCellHeight / 2, page.width, 2, 255);
    } else if (line % 12 != 6) {
      drawTextLine(strip, y, noise);
    }
  }
  drawBarcode(strip, y + kCellHeight, kBarcodeHeight, noise);
}

void drawPhoto(Page& page, Noise& noise) {
  const Gradient broad(page, 128, 180, noise);
  const Gradient fine(page, 16, 60, noise);
  for (int y = 0; y < page.height; ++y) {
    std::uint8_t* row = page.row(y);
    for (int x = 0; x < page.width; ++x) {
      row[x] = static_cast<std::uint8_t>(broad.at(x, y) + fine.at(x, y) + noise.below(13));
    }
  }
}

}  // namespace wren::bench
