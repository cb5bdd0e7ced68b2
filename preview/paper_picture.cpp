// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/paper_picture.h"

#include <algorithm>

#include "common/glyphs.h"
#include "escpos/counted.h"

namespace wren::preview {
namespace {

// Layout of the margins in font pixels.
constexpr std::uint32_t kLineHeight = kGlyphRows + 4;
constexpr std::uint32_t kLabelIndent = 16;
constexpr std::uint32_t kLabelDrop = 4;
constexpr std::uint32_t kPadding = 8;
constexpr std::uint32_t kCutThickness = 3;
constexpr std::uint32_t kCutOverhang = 12;
constexpr std::uint32_t kCutDash = 18;
constexpr std::uint32_t kShortTick = 6;
constexpr std::uint32_t kMiddleTick = 12;
constexpr std::uint32_t kLongTick = 18;

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
      return "drawer, pin " + std::to_string(drawerPin(mark.first)) + ", " +
             std::to_string(mark.second) + " ms";
    case escpos::MarkKind::kBeep:
      return escpos::counted(mark.first, "beep");
    case escpos::MarkKind::kPage:
      break;
  }
  return {};
}

std::uint32_t textWidth(const std::string& text) {
  return static_cast<std::uint32_t>(text.size()) * kGlyphAdvance;
}

std::string rulerText(std::uint64_t mm) {
  return std::to_string(mm) + " mm";
}

Ink labelInk(escpos::MarkKind kind) {
  if (kind == escpos::MarkKind::kDrawerPulse) return kDrawerInk;
  return kind == escpos::MarkKind::kBeep ? kBeepInk : kCutInk;
}

}  // namespace

unsigned drawerPin(unsigned connector) {
  return connector == 0 ? 2 : 5;
}

PaperPicture::PaperPicture(const escpos::Paper& paper, const escpos::Piece& piece,
                           PictureStyle style)
    : paper_(paper), rows_(piece.rows), style_(style) {
  if (rows_.end <= rows_.first) return;
  const std::uint32_t widthDots = std::max(paper.widthDots, kMinWidthDots);
  dots_.resize(widthDots);
  paperWidth_ = widthDots * style_.scale;
  paperHeight_ = (rows_.end - rows_.first) * style_.scale;
  width_ = paperWidth_;
  height_ = paperHeight_;
  if (!style_.marks) return;
  textScale_ = std::max(1U, (pixelsPerInch() + 100) / 200);
  leftMargin_ = leftMargin();
  // The line of a cut at the end of the paper lies below the last row.
  height_ += std::uint64_t{kCutThickness} * textScale_;
  for (std::size_t i = piece.firstMark; i < piece.endMark; ++i) addMark(paper.marks[i]);
  width_ = leftMargin_ + paperWidth_ + rightMargin();
}

// Wide enough for the longest number of the ruler.
std::uint32_t PaperPicture::leftMargin() const {
  const std::string longest = rulerText(numberedMmAt(paperHeight_));
  return (kPadding + textWidth(longest) + kPadding + kLongTick) * textScale_;
}

// Wide enough for the longest label.
std::uint32_t PaperPicture::rightMargin() const {
  std::uint32_t widest = cuts_.empty() ? 0 : kCutOverhang;
  for (const Label& label : labels_) {
    widest = std::max(widest, kLabelIndent + textWidth(label.text));
  }
  return (widest + kPadding) * textScale_;
}

void PaperPicture::addMark(const escpos::Mark& mark) {
  if (mark.kind == escpos::MarkKind::kPage) return;
  const std::uint64_t row = std::max(mark.atUnits / escpos::kUnitsPerRow, rows_.first);
  const std::uint64_t top = (row - rows_.first) * style_.scale;
  const bool isCut = labelInk(mark.kind) == kCutInk;
  if (isCut) cuts_.push_back({top, mark.kind == escpos::MarkKind::kPartialCut});
  addLabel(top, mark);
}

// A label moves down until it is clear of the one above it. Labels that would move too far are
// dropped, so that a malformed stream cannot make the picture grow without limit.
void PaperPicture::addLabel(std::uint64_t top, const escpos::Mark& mark) {
  const std::uint64_t line = std::uint64_t{kLineHeight} * textScale_;
  const std::uint64_t firstFree = labels_.empty() ? 0 : labels_.back().top + line;
  const std::uint64_t shiftedTop = std::max(top, firstFree);
  if (shiftedTop > top + kMaxShiftLines * line) return;
  labels_.push_back({shiftedTop, labelText(mark), labelInk(mark.kind)});
  height_ = std::max(height_, shiftedTop + line + std::uint64_t{kPadding} * textScale_);
}

void PaperPicture::paintRow(std::uint64_t y, std::span<std::uint8_t> pixels) {
  std::fill(pixels.begin(), pixels.end(), style_.marks ? kMargin : kPaper);
  if (y < paperHeight_) paintDots(y, pixels.subspan(leftMargin_, paperWidth_));
  if (!style_.marks) return;
  paintScale(y, pixels);
  paintLabel(y, pixels);
  paintCut(y, pixels);
}

// A dot is 0 or 1, which are the values of the inks, so that it can be copied.
static_assert(kPaper == 0 && kDot == 1);

void PaperPicture::paintDots(std::uint64_t y, std::span<std::uint8_t> pixels) {
  const std::uint64_t row = rows_.first + y / style_.scale;
  if (row != dotsRow_) escpos::renderRow(paper_, row, dots_);
  dotsRow_ = row;
  if (style_.scale == 1) {
    std::copy(dots_.begin(), dots_.end(), pixels.begin());
    return;
  }
  std::size_t x = 0;
  for (const std::uint8_t dot : dots_) {
    std::fill_n(pixels.begin() + x, style_.scale, dot);
    x += style_.scale;
  }
}

// The pixel row of a distance from the top, rounded; an inch has 25.4 mm.
std::uint64_t PaperPicture::pixelOfMm(std::uint64_t mm) const {
  return (mm * 10 * pixelsPerInch() + 127) / 254;
}

void PaperPicture::paintScale(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const std::uint64_t perInch = pixelsPerInch();
  // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): no style has a scale or dpi of 0
  const std::uint64_t nearest = (y * 254 + 5 * perInch) / (10 * perInch);
  if (pixelOfMm(nearest) == y && y <= paperHeight_) {
    const std::uint32_t tick =
        nearest % 10 == 0 ? kLongTick : (nearest % 5 == 0 ? kMiddleTick : kShortTick);
    const std::uint32_t length = tick * textScale_;
    std::fill_n(pixels.begin() + (leftMargin_ - length), length, kScale);
  }
  // The number is drawn below its long tick, left of the short ticks that follow.
  const std::uint64_t mm = numberedMmAt(std::min(y, paperHeight_));
  const std::uint64_t top = pixelOfMm(mm) + textScale_;
  if (y < top || top + std::uint64_t{kGlyphRows} * textScale_ > height_) return;
  const std::string text = rulerText(mm);
  const std::uint32_t right = kPadding + kMiddleTick;
  const std::uint32_t left = leftMargin_ - (right + textWidth(text)) * textScale_;
  paintText(text, kScale, left, y - top, pixels);
}

// The last tick with a number at or above a pixel row. Every centimetre has a number, if there is
// room for it.
std::uint64_t PaperPicture::numberedMmAt(std::uint64_t y) const {
  const bool hasRoom = pixelOfMm(10) >= std::uint64_t{kLineHeight} * textScale_;
  const std::uint64_t stepMm = hasRoom ? 10 : 50;
  const std::uint64_t mm = y * 254 / (std::uint64_t{10} * pixelsPerInch());
  return mm / stepMm * stepMm;
}

void PaperPicture::paintLabel(std::uint64_t y, std::span<std::uint8_t> pixels) const {
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

void PaperPicture::paintCut(std::uint64_t y, std::span<std::uint8_t> pixels) const {
  const auto after = std::upper_bound(
      cuts_.begin(), cuts_.end(), y, [](std::uint64_t at, const CutLine& c) { return at < c.top; });
  if (after == cuts_.begin()) return;
  const CutLine& cut = *(after - 1);
  if (y >= cut.top + std::uint64_t{kCutThickness} * textScale_) return;
  const std::uint32_t dash = kCutDash * textScale_;
  const std::uint32_t end = leftMargin_ + paperWidth_ + kCutOverhang * textScale_;
  for (std::uint32_t x = leftMargin_ - kCutOverhang * textScale_; x < end; ++x) {
    if (!cut.dashed || x / dash % 2 == 0) pixels[x] = kCutInk;
  }
}

void PaperPicture::paintText(const std::string& text, Ink ink, std::uint32_t left,
                             std::uint64_t row, std::span<std::uint8_t> pixels) const {
  if (row >= std::uint64_t{kGlyphRows} * textScale_) return;
  const auto fontRow = static_cast<unsigned>(row / textScale_);
  const std::size_t wanted = text.size() * kGlyphAdvance * textScale_;
  const std::size_t length = std::min<std::size_t>(wanted, pixels.size() - left);
  for (std::size_t x = 0; x < length; ++x) {
    if (textPixel(text, static_cast<unsigned>(x / textScale_), fontRow)) pixels[left + x] = ink;
  }
}

Picture greyPicture(PaperPicture& picture) {
  // Luma of ITU-R BT.601 in thousandths.
  std::array<std::uint8_t, kInkCount> levels{};
  std::transform(kInkColours.begin(), kInkColours.end(), levels.begin(), [](const Colour& c) {
    return static_cast<std::uint8_t>((299 * c.red + 587 * c.green + 114 * c.blue + 500) / 1000);
  });
  Picture grey = Picture::white(picture.width(), static_cast<std::uint32_t>(picture.height()));
  for (std::uint32_t y = 0; y < grey.heightPx; ++y) {
    const std::span row(grey.row(y), grey.widthPx);
    picture.paintRow(y, row);
    std::transform(row.begin(), row.end(), row.begin(),
                   [&](std::uint8_t ink) { return levels[ink]; });
  }
  return grey;
}

}  // namespace wren::preview
