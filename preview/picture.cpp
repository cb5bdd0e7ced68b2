// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/picture.h"

#include <algorithm>

#include "preview/glyphs.h"

namespace wren::preview {
namespace {

// Layout of the margins in font pixels.
constexpr std::uint32_t kScaleMargin = 40;
constexpr std::uint32_t kLabelMargin = 16 * kGlyphAdvance + 8;
constexpr std::uint32_t kLineHeight = kGlyphRows + 2;
constexpr std::uint32_t kLabelIndent = 6;
constexpr std::uint32_t kLabelDrop = 2;
constexpr std::uint32_t kCutOverhang = 4;
constexpr std::uint32_t kCutDash = 6;
constexpr std::uint32_t kShortTick = 2;
constexpr std::uint32_t kMiddleTick = 4;
constexpr std::uint32_t kLongTick = 6;

// A label that would have to move down further than this is dropped.
constexpr std::uint64_t kMaxShiftLines = 12;

// A piece without dots still gets a visible strip of paper.
constexpr std::uint32_t kMinWidthDots = 8;

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
  const std::uint32_t widthDots = std::max(paper.widthDots, kMinWidthDots);
  dots_.resize(widthDots);
  paperWidth_ = widthDots * style_.scale;
  paperHeight_ = (rows_.end - rows_.first) * style_.scale;
  width_ = paperWidth_;
  height_ = paperHeight_;
  if (!style_.marks) return;
  textScale_ = std::max(1U, (pixelsPerInch() + 35) / 70);
  leftMargin_ = kScaleMargin * textScale_;
  width_ = leftMargin_ + paperWidth_ + kLabelMargin * textScale_;
  // The line of a cut at the end of the paper lies below the last row.
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

// A label moves down until it is clear of the one above it. Labels that would move too far are
// dropped, so that a malformed stream cannot make the picture grow without limit.
void Picture::addLabel(std::uint64_t top, const escpos::Mark& mark) {
  const std::uint64_t line = std::uint64_t{kLineHeight} * textScale_;
  const std::uint64_t firstFree = labels_.empty() ? 0 : labels_.back().top + line;
  const std::uint64_t shiftedTop = std::max(top, firstFree);
  if (shiftedTop > top + kMaxShiftLines * line) return;
  labels_.push_back({shiftedTop, labelText(mark), labelInk(mark.kind)});
  height_ = std::max(height_, shiftedTop + line);
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

// The pixel row of a distance from the top, rounded; an inch has 25.4 mm.
std::uint64_t Picture::pixelOfMm(std::uint64_t mm) const {
  return (mm * 10 * pixelsPerInch() + 127) / 254;
}

void Picture::paintScale(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const std::uint64_t perInch = pixelsPerInch();
  const std::uint64_t nearest = (y * 254 + 5 * perInch) / (10 * perInch);
  if (pixelOfMm(nearest) == y) {
    const std::uint32_t tick =
        nearest % 10 == 0 ? kLongTick : (nearest % 5 == 0 ? kMiddleTick : kShortTick);
    const std::uint32_t length = tick * textScale_;
    std::fill_n(pixels.begin() + (leftMargin_ - length), length, kScale);
  }
  // The number is drawn below its long tick, left of the short ticks that follow.
  const std::uint64_t tens = y * 254 / (100 * perInch);
  const std::uint64_t top = pixelOfMm(tens * 10) + textScale_;
  if (y < top || top + std::uint64_t{kGlyphRows} * textScale_ > paperHeight_) return;
  const std::string number = std::to_string(tens * 10);
  const auto length = static_cast<std::uint32_t>(number.size()) * kGlyphAdvance + kMiddleTick;
  const std::uint32_t right = leftMargin_ - textScale_;
  paintText(number, kScale, right - std::min(right, length * textScale_), y - top, pixels);
}

void Picture::paintLabel(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const auto after = std::upper_bound(labels_.begin(), labels_.end(), y,
                                      [](std::uint64_t at, const Label& l) { return at < l.top; });
  if (after == labels_.begin()) return;
  const Label& label = *(after - 1);
  // Keeps the text clear of the cut line at the same position.
  const std::uint64_t textTop = label.top + std::uint64_t{kLabelDrop} * textScale_;
  if (y < textTop) return;
  paintText(label.text, label.ink, leftMargin_ + paperWidth_ + kLabelIndent * textScale_,
            y - textTop, pixels);
}

void Picture::paintCut(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const auto after = std::upper_bound(
      cuts_.begin(), cuts_.end(), y, [](std::uint64_t at, const CutLine& c) { return at < c.top; });
  if (after == cuts_.begin()) return;
  const CutLine& cut = *(after - 1);
  if (y >= cut.top + textScale_) return;
  const std::uint32_t dash = kCutDash * textScale_;
  const std::uint32_t end = leftMargin_ + paperWidth_ + kCutOverhang * textScale_;
  for (std::uint32_t x = leftMargin_ - kCutOverhang * textScale_; x < end; ++x) {
    if (!cut.dashed || x / dash % 2 == 0) pixels[x] = kCutInk;
  }
}

void Picture::paintText(const std::string& text, Ink ink, std::uint32_t left, std::uint64_t row,
                        std::span<std::uint8_t> pixels) const {
  if (row >= std::uint64_t{kGlyphRows} * textScale_) return;
  const auto fontRow = static_cast<unsigned>(row / textScale_);
  const std::size_t wanted = text.size() * kGlyphAdvance * textScale_;
  const std::size_t length = std::min<std::size_t>(wanted, pixels.size() - left);
  for (std::size_t x = 0; x < length; ++x) {
    if (textPixel(text, static_cast<unsigned>(x / textScale_), fontRow)) pixels[left + x] = ink;
  }
}

}  // namespace wren::preview
