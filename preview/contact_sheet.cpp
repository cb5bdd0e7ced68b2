// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/contact_sheet.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "common/glyphs.h"

namespace wren::preview {
namespace {

// Sizes in pixels.
constexpr std::uint32_t kMinSheetWidth = 64;
constexpr std::uint32_t kMargin = 16;
constexpr std::uint32_t kGap = 16;
constexpr std::uint32_t kFrame = 1;
constexpr std::uint32_t kHeadingPadding = 4;
constexpr std::uint32_t kLabelPadding = 4;
// Wide enough for labels such as "Brightness -20".
constexpr std::uint32_t kMinCellWidth = 15 * kGlyphAdvance;
// Longer pictures are cut into parts, so that a screen always shows their labels.
constexpr std::uint32_t kMaxPartHeight = 900;

constexpr std::uint8_t kTextLevel = 30;
constexpr std::uint8_t kFrameLevel = 200;
constexpr std::uint8_t kHeadingLevel = 232;

struct Columns {
  std::uint32_t count = 0;
  std::uint32_t widthPx = 0;
  std::uint32_t widestPicturePx = 0;

  std::uint32_t sheetWidth() const { return 2 * kMargin + count * (widthPx + kGap) - kGap; }
  std::uint32_t left(std::size_t column) const {
    return kMargin + static_cast<std::uint32_t>(column) * (widthPx + kGap);
  }
};

// Equal numbers of cells on all lines of a row, as far as possible.
std::uint32_t columnCount(std::uint32_t cells, std::uint32_t room) {
  const std::uint32_t fitting = std::max(1U, (room + kGap) / (kMinCellWidth + kGap));
  const std::uint32_t lines = (cells + fitting - 1) / fitting;
  return (cells + lines - 1) / lines;
}

Columns columnsFor(const std::vector<SheetRow>& rows, int maxWidthPx) {
  Columns columns;
  std::uint32_t cells = 0;
  for (const SheetRow& row : rows) {
    cells = std::max(cells, static_cast<std::uint32_t>(row.cells.size()));
    for (const SheetCell& cell : row.cells) {
      columns.widestPicturePx = std::max(columns.widestPicturePx, cell.picture.widthPx);
    }
  }
  if (cells == 0) return {};
  const auto sheetWidth = static_cast<std::uint32_t>(std::max<int>(maxWidthPx, kMinSheetWidth));
  const std::uint32_t room = sheetWidth - 2 * kMargin;
  columns.count = columnCount(cells, room);
  columns.widthPx = std::min(std::max(columns.widestPicturePx + 2 * kFrame, kMinCellWidth),
                             (room + kGap) / columns.count - kGap);
  return columns;
}

// Breaks at spaces; a word that is longer than a line is cut.
std::vector<std::string> wrapped(std::string_view text, std::size_t letters) {
  std::vector<std::string> lines;
  while (text.size() > letters) {
    const std::size_t space = text.rfind(' ', letters);
    const bool hasSpace = space != std::string_view::npos && space > 0;
    lines.emplace_back(text.substr(0, hasSpace ? space : letters));
    text.remove_prefix(hasSpace ? space + 1 : letters);
  }
  lines.emplace_back(text);
  return lines;
}

// The sheet while it is drawn: it grows downwards.
class Sheet {
 public:
  explicit Sheet(const Columns& columns) : columns_(columns) {
    picture_.widthPx = columns.sheetWidth();
    addSpace(kMargin);
  }

  void addLine(const std::string& heading, std::span<const SheetCell> cells);
  Picture take() { return std::move(picture_); }

 private:
  // Returns the first row of the new space.
  std::uint32_t addSpace(std::uint32_t rows);
  std::vector<Picture> scaledPictures(std::span<const SheetCell> cells) const;
  void addHeading(const std::string& heading);
  void addLabels(std::span<const SheetCell> cells);
  void addParts(std::span<const Picture> pictures, std::uint32_t firstRow, std::uint32_t rows);
  void fill(const Area& area, std::uint8_t level);
  void drawText(std::string_view text, std::uint32_t left, std::uint32_t top);

  Columns columns_;
  Picture picture_;
};

std::uint32_t Sheet::addSpace(std::uint32_t rows) {
  const std::uint32_t top = picture_.heightPx;
  picture_.heightPx += rows;
  picture_.pixels.resize(std::size_t{picture_.heightPx} * picture_.widthPx, kWhiteLevel);
  return top;
}

void Sheet::fill(const Area& area, std::uint8_t level) {
  for (std::uint32_t y = 0; y < area.heightPx; ++y) {
    std::fill_n(picture_.row(area.top + y) + area.left, area.widthPx, level);
  }
}

void Sheet::drawText(std::string_view text, std::uint32_t left, std::uint32_t top) {
  const auto wanted = static_cast<std::uint32_t>(text.size()) * kGlyphAdvance;
  const std::uint32_t length = std::min(wanted, picture_.widthPx - left);
  for (std::uint32_t y = 0; y < kGlyphRows; ++y) {
    for (std::uint32_t x = 0; x < length; ++x) {
      if (textPixel(text, x, y)) picture_.row(top + y)[left + x] = kTextLevel;
    }
  }
}

void Sheet::addHeading(const std::string& heading) {
  const std::uint32_t widthPx = picture_.widthPx - 2 * kMargin;
  const auto lines = wrapped(heading, (widthPx - 2 * kHeadingPadding) / kGlyphAdvance);
  const auto height = static_cast<std::uint32_t>(lines.size()) * kGlyphRows + 2 * kHeadingPadding;
  std::uint32_t top = addSpace(height + kGap / 2);
  fill({kMargin, top, widthPx, height}, kHeadingLevel);
  top += kHeadingPadding;
  for (const std::string& line : lines) {
    drawText(line, kMargin + kHeadingPadding, top);
    top += kGlyphRows;
  }
}

void Sheet::addLabels(std::span<const SheetCell> cells) {
  std::vector<std::vector<std::string>> labels;
  std::size_t lines = 0;
  for (const SheetCell& cell : cells) {
    labels.push_back(wrapped(cell.label, columns_.widthPx / kGlyphAdvance));
    lines = std::max(lines, labels.back().size());
  }
  const std::uint32_t top =
      addSpace(static_cast<std::uint32_t>(lines) * kGlyphRows + kLabelPadding);
  for (std::size_t column = 0; column < labels.size(); ++column) {
    for (std::size_t line = 0; line < labels[column].size(); ++line) {
      drawText(labels[column][line], columns_.left(column),
               top + static_cast<std::uint32_t>(line) * kGlyphRows);
    }
  }
}

void Sheet::addParts(std::span<const Picture> pictures, std::uint32_t firstRow,
                     std::uint32_t rows) {
  const std::uint32_t top = addSpace(rows + 2 * kFrame + kGap);
  for (std::size_t column = 0; column < pictures.size(); ++column) {
    const Picture part = cropped(pictures[column], {0, firstRow, columns_.widthPx, rows});
    if (part.pixels.empty()) continue;
    const std::uint32_t left = columns_.left(column);
    fill({left, top, part.widthPx + 2 * kFrame, part.heightPx + 2 * kFrame}, kFrameLevel);
    for (std::uint32_t y = 0; y < part.heightPx; ++y) {
      std::copy_n(part.row(y), part.widthPx, picture_.row(top + kFrame + y) + left + kFrame);
    }
  }
}

std::vector<Picture> Sheet::scaledPictures(std::span<const SheetCell> cells) const {
  const std::uint64_t widest = columns_.widestPicturePx;
  const std::uint64_t room = std::min<std::uint64_t>(widest, columns_.widthPx - 2 * kFrame);
  std::vector<Picture> pictures;
  for (const SheetCell& cell : cells) {
    const std::uint64_t widthPx = widest == 0 ? 0 : cell.picture.widthPx * room / widest;
    pictures.push_back(
        scaledDown(cell.picture, static_cast<std::uint32_t>(std::max<std::uint64_t>(1, widthPx))));
  }
  return pictures;
}

void Sheet::addLine(const std::string& heading, std::span<const SheetCell> cells) {
  const std::vector<Picture> pictures = scaledPictures(cells);
  std::uint32_t tallest = 1;
  for (const Picture& picture : pictures) tallest = std::max(tallest, picture.heightPx);
  const std::uint32_t parts = (tallest + kMaxPartHeight - 1) / kMaxPartHeight;
  const std::uint32_t rows = (tallest + parts - 1) / parts;
  for (std::uint32_t part = 0; part < parts; ++part) {
    const std::string number =
        " (" + std::to_string(part + 1) + " of " + std::to_string(parts) + ")";
    if (!heading.empty()) addHeading(parts == 1 ? heading : heading + number);
    addLabels(cells);
    addParts(pictures, part * rows, rows);
  }
}

}  // namespace

Picture drawContactSheet(const std::vector<SheetRow>& rows, int maxWidthPx) {
  const Columns columns = columnsFor(rows, maxWidthPx);
  if (columns.count == 0) return {};
  Sheet sheet(columns);
  for (const SheetRow& row : rows) {
    const std::span<const SheetCell> cells = row.cells;
    for (std::size_t first = 0; first < cells.size(); first += columns.count) {
      const std::size_t count = std::min<std::size_t>(columns.count, cells.size() - first);
      sheet.addLine(row.heading, cells.subspan(first, count));
    }
  }
  return sheet.take();
}

}  // namespace wren::preview
