// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/preview/picture.h"

#include <algorithm>

#include "escpos/preview/glyphs.h"

namespace preview {
namespace {

// Layout of the margins, in cells of a letter's grid.
constexpr std::uint32_t kScaleCells = 40;
constexpr std::uint32_t kLabelCells = 16 * kGlyphAdvance + 8;
constexpr std::uint32_t kLineCells = kGlyphRows + 2;
constexpr std::uint32_t kLabelIndentCells = 6;
constexpr std::uint32_t kCutOverhangCells = 4;
constexpr std::uint32_t kTickCells = 2;
constexpr std::uint32_t kMiddleTickCells = 4;
constexpr std::uint32_t kLongTickCells = 6;

// Lines of text that a label may slip down from its place before it is left out.
constexpr std::uint64_t kMaxSlipLines = 12;

std::string labelText(const escpos::Mark& mark) {
  switch (mark.kind) {
    case escpos::MarkKind::kFullCut:
      return "full cut";
    case escpos::MarkKind::kPartialCut:
      return "partial cut";
    case escpos::MarkKind::kDrawerPulse:
      return "drawer " + std::to_string(mark.first) + " " + std::to_string(mark.second) + " ms";
    case escpos::MarkKind::kBeep:
      return "beep " + std::to_string(mark.first) + " x " + std::to_string(mark.second);
    case escpos::MarkKind::kPage:
      break;
  }
  return {};
}

Ink labelInk(escpos::MarkKind kind) {
  if (kind == escpos::MarkKind::kDrawerPulse) return kDrawerInk;
  return kind == escpos::MarkKind::kBeep ? kBeepInk : kCutInk;
}

}  // namespace

Picture::Picture(const escpos::Paper& paper, const escpos::Piece& piece, PictureStyle style)
    : paper_(paper), rows_(piece.rows), style_(style) {
  if (rows_.end <= rows_.first) return;
  // A strip without a single dot still has some width to be seen by.
  const std::uint32_t widthDots = std::max<std::uint32_t>(paper.widthDots, 8);
  dots_.resize(widthDots);
  paperWidth_ = widthDots * style_.scale;
  paperHeight_ = (rows_.end - rows_.first) * style_.scale;
  width_ = paperWidth_;
  height_ = paperHeight_;
  if (!style_.marks) return;
  textScale_ = std::max(1U, (pixelsPerInch() + 35) / 70);
  leftMargin_ = kScaleCells * textScale_;
  width_ = leftMargin_ + paperWidth_ + kLabelCells * textScale_;
  // Room for the line of a cut at the very end.
  height_ += textScale_;
  for (std::size_t i = piece.firstMark; i < piece.endMark; ++i) addMark(paper.marks[i]);
}

void Picture::addMark(const escpos::Mark& mark) {
  if (mark.kind == escpos::MarkKind::kPage) return;
  const std::uint64_t row = std::max(mark.atUnits / escpos::kUnitsPerRow, rows_.first);
  const std::uint64_t top = (row - rows_.first) * style_.scale;
  const bool isCut = labelInk(mark.kind) == kCutInk;
  if (isCut) cuts_.push_back({top, mark.kind == escpos::MarkKind::kPartialCut});
  addLabel(top, mark);
}

// A label moves down to where the one above it leaves room. Where very much happens in one
// place some are left out, so that a hostile stream does not make a picture of labels.
void Picture::addLabel(std::uint64_t top, const escpos::Mark& mark) {
  const std::uint64_t line = std::uint64_t{kLineCells} * textScale_;
  const std::uint64_t free = labels_.empty() ? 0 : labels_.back().top + line;
  const std::uint64_t place = std::max(top, free);
  if (place > top + kMaxSlipLines * line) return;
  labels_.push_back({place, labelText(mark), labelInk(mark.kind)});
  height_ = std::max(height_, place + line);
}

void Picture::paintRow(std::uint64_t y, std::span<std::uint8_t> pixels) {
  std::fill(pixels.begin(), pixels.end(), style_.marks ? kMargin : kPaper);
  if (y < paperHeight_) paintDots(y, pixels.subspan(leftMargin_, paperWidth_));
  if (!style_.marks) return;
  if (y <= paperHeight_) paintScale(y, pixels);
  paintLabel(y, pixels);
  paintCut(y, pixels);
}

void Picture::paintDots(std::uint64_t y, std::span<std::uint8_t> pixels) {
  const std::uint64_t row = rows_.first + y / style_.scale;
  if (row != dotsRow_) escpos::renderRow(paper_, row, dots_);
  dotsRow_ = row;
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    pixels[x] = dots_[x / style_.scale] != 0 ? kDot : kPaper;
  }
}

// The pixel row nearest to a distance from the top; an inch has 25.4 mm.
std::uint64_t Picture::pixelOfMm(std::uint64_t mm) const {
  return (mm * 10 * pixelsPerInch() + 127) / 254;
}

void Picture::paintScale(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const std::uint64_t perInch = pixelsPerInch();
  const std::uint64_t nearest = (y * 254 + 5 * perInch) / (10 * perInch);
  if (pixelOfMm(nearest) == y) {
    const std::uint32_t cells =
        nearest % 10 == 0 ? kLongTickCells : (nearest % 5 == 0 ? kMiddleTickCells : kTickCells);
    const std::uint32_t length = cells * textScale_;
    std::fill_n(pixels.begin() + (leftMargin_ - length), length, kScale);
  }
  // The number stands below the long tick of its place, beside the next short ones.
  const std::uint64_t tens = y * 254 / (100 * perInch);
  const std::uint64_t top = pixelOfMm(tens * 10) + textScale_;
  if (y < top || top + std::uint64_t{kGlyphRows} * textScale_ > paperHeight_) return;
  const std::string number = std::to_string(tens * 10);
  const auto cells = static_cast<std::uint32_t>(number.size()) * kGlyphAdvance + kMiddleTickCells;
  const std::uint32_t right = leftMargin_ - textScale_;
  paintText(number, kScale, right - std::min(right, cells * textScale_), y - top, pixels);
}

void Picture::paintLabel(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const auto after = std::upper_bound(labels_.begin(), labels_.end(), y,
                                      [](std::uint64_t at, const Label& l) { return at < l.top; });
  if (after == labels_.begin()) return;
  const Label& label = *(after - 1);
  // One cell lower than its place, clear of the line of a cut.
  if (y < label.top + std::uint64_t{2} * textScale_) return;
  paintText(label.text, label.ink, leftMargin_ + paperWidth_ + kLabelIndentCells * textScale_,
            y - label.top - std::uint64_t{2} * textScale_, pixels);
}

void Picture::paintCut(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const auto after = std::upper_bound(
      cuts_.begin(), cuts_.end(), y, [](std::uint64_t at, const CutLine& c) { return at < c.top; });
  if (after == cuts_.begin()) return;
  const CutLine& cut = *(after - 1);
  if (y >= cut.top + textScale_) return;
  const std::uint32_t dash = 6 * textScale_;
  const std::uint32_t end = leftMargin_ + paperWidth_ + kCutOverhangCells * textScale_;
  for (std::uint32_t x = leftMargin_ - kCutOverhangCells * textScale_; x < end; ++x) {
    if (!cut.dashed || x / dash % 2 == 0) pixels[x] = kCutInk;
  }
}

void Picture::paintText(const std::string& text, Ink ink, std::uint32_t left, std::uint64_t row,
                        std::span<std::uint8_t> pixels) const {
  if (row >= std::uint64_t{kGlyphRows} * textScale_) return;
  const auto gridRow = static_cast<unsigned>(row / textScale_);
  const std::size_t wanted = text.size() * kGlyphAdvance * textScale_;
  const std::size_t length = std::min<std::size_t>(wanted, pixels.size() - left);
  for (std::size_t x = 0; x < length; ++x) {
    if (textPixel(text, static_cast<unsigned>(x / textScale_), gridRow)) pixels[left + x] = ink;
  }
}

}  // namespace preview
