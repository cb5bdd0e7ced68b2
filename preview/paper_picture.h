// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A piece of paper as a picture, rendered row by row so that the pixels of a
// whole roll are never in memory. This unit defines colours and margins, not the
// file format.

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "escpos/paper.h"
#include "preview/picture.h"

namespace wren::preview {

struct Colour {
  std::uint8_t red, green, blue;
};

/// Pixel values: indices into `kInkColours`.
enum Ink : std::uint8_t { kPaper, kDot, kMargin, kScale, kCutInk, kDrawerInk, kBeepInk, kInkCount };

/// The palette, one entry per `Ink`.
inline constexpr std::array<Colour, kInkCount> kInkColours = {{
    {255, 255, 255},  // kPaper
    {0, 0, 0},        // kDot
    {226, 228, 232},  // kMargin
    {70, 74, 82},     // kScale
    {205, 30, 30},    // kCutInk
    {20, 120, 50},    // kDrawerInk
    {30, 70, 200},    // kBeepInk
}};

struct PictureStyle {
  unsigned dpi = 203;  ///< of the printer
  unsigned scale = 1;  ///< a dot becomes `scale` x `scale` pixels
  bool marks = false;  ///< add margins with a scale in mm and the events on the paper
};

class PaperPicture {
 public:
  /// @param paper must outlive the picture.
  PaperPicture(const escpos::Paper& paper, const escpos::Piece& piece, PictureStyle style);

  /// In pixels; both are 0 for a piece without rows.
  std::uint32_t width() const { return width_; }
  std::uint64_t height() const { return height_; }
  unsigned pixelsPerInch() const { return style_.dpi * style_.scale; }
  /// Size of the palette: 2 without marks, else `kInkCount`.
  std::size_t inkCount() const { return style_.marks ? kInkCount : 2; }

  /// Renders row `y`. Fastest in ascending order, because the dots of the last raster row are kept.
  /// @param pixels `width()` pixels, one `Ink` each.
  void paintRow(std::uint64_t y, std::span<std::uint8_t> pixels);

 private:
  struct Label {
    std::uint64_t top;
    std::string text;
    Ink ink;
  };
  struct CutLine {
    std::uint64_t top;
    bool dashed;
  };

  std::uint32_t leftMargin() const;
  std::uint32_t rightMargin() const;
  void addMark(const escpos::Mark& mark);
  void addLabel(std::uint64_t top, const escpos::Mark& mark);
  void paintDots(std::uint64_t y, std::span<std::uint8_t> pixels);
  void paintScale(std::uint64_t y, std::span<std::uint8_t> pixels) const;
  void paintLabel(std::uint64_t y, std::span<std::uint8_t> pixels) const;
  void paintCut(std::uint64_t y, std::span<std::uint8_t> pixels) const;
  void paintText(const std::string& text, Ink ink, std::uint32_t left, std::uint64_t row,
                 std::span<std::uint8_t> pixels) const;
  std::uint64_t pixelOfMm(std::uint64_t mm) const;
  std::uint64_t numberedMmAt(std::uint64_t y) const;

  const escpos::Paper& paper_;
  escpos::RowRange rows_;
  PictureStyle style_;
  std::uint32_t textScale_ = 0;  // a font pixel becomes textScale_ x textScale_ pixels
  std::uint32_t leftMargin_ = 0;
  std::uint32_t paperWidth_ = 0;
  std::uint64_t paperHeight_ = 0;
  std::uint32_t width_ = 0;
  std::uint64_t height_ = 0;
  std::vector<Label> labels_;  // sorted by top, without overlap
  std::vector<CutLine> cuts_;  // sorted by top
  std::vector<std::uint8_t> dots_;
  std::uint64_t dotsRow_ = UINT64_MAX;  // the raster row in dots_
};

/// The pin of the drawer's plug that carries the pulse: 2 for connector 0, 5 for connector 1.
unsigned drawerPin(unsigned connector);

/// The whole picture in grey levels. It needs a byte per pixel.
Picture greyPicture(PaperPicture& picture);

}  // namespace wren::preview
