// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_pages.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace wren::app {
namespace {

constexpr gunichar kReplacement = 0xFFFD;
constexpr unsigned kTabColumns = 8;
constexpr std::string_view kTextControls = "\t\n\r\f";
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";
// Marks on one character. Text can hold any number.
constexpr std::size_t kMaxCellBytes = 64;

struct Decoded {
  gunichar codePoint;
  std::size_t bytes;
};

Decoded decode(const std::string& text, std::size_t position) {
  const char* from = text.data() + position;
  if (*from == '\0') return {kReplacement, 1};
  const gunichar found =
      g_utf8_get_char_validated(from, static_cast<gssize>(text.size() - position));
  // Both of its errors: wrong and incomplete.
  if (found >= static_cast<gunichar>(-2)) return {kReplacement, 1};
  return {found, static_cast<std::size_t>(g_utf8_skip[static_cast<unsigned char>(*from)])};
}

void append(std::string& text, gunichar codePoint) {
  char bytes[6];
  text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(codePoint, bytes)));
}

bool isSpace(gunichar codePoint) {
  return g_unichar_type(codePoint) == G_UNICODE_SPACE_SEPARATOR;
}

bool isControl(gunichar codePoint) {
  return g_unichar_type(codePoint) == G_UNICODE_CONTROL;
}

// Joiners, marks of direction, soft hyphens: they are not to be seen.
bool isInvisible(gunichar codePoint) {
  return g_unichar_type(codePoint) == G_UNICODE_FORMAT;
}

bool isMark(gunichar codePoint) {
  return g_unichar_ismark(codePoint) ||
         (g_unichar_iszerowidth(codePoint) && !isInvisible(codePoint));
}

// Whether the last cell of the line reaches to the column.
bool continues(const TextLine& line, unsigned column) {
  return !line.empty() && line.back().column + line.back().columns == column;
}

void addMark(std::string& cell, gunichar codePoint) {
  if (cell.size() < kMaxCellBytes) append(cell, codePoint);
}

}  // namespace

bool isTextHead(std::string_view head) {
  constexpr auto kIncomplete = static_cast<gunichar>(-2);
  const char* end = nullptr;
  if (g_utf8_validate(head.data(), static_cast<gssize>(head.size()), &end) == FALSE) {
    const auto left = static_cast<gssize>(head.data() + head.size() - end);
    if (g_utf8_get_char_validated(end, left) != kIncomplete) return false;
  }
  return !head.empty() && std::none_of(head.begin(), head.end(), [](char byte) {
    return g_ascii_iscntrl(byte) != 0 && kTextControls.find(byte) == kTextControls.npos;
  });
}

TextPages::TextPages(std::string text, unsigned columns, std::size_t maxLines)
    : text_(std::move(text)), columns_(columns), maxLines_(maxLines) {
  if (text_.starts_with(kByteOrderMark)) position_ = 3;
}

std::optional<TextPage> TextPages::next() {
  TextPage page;
  while (position_ < text_.size() && page.size() < maxLines_) {
    if (!isAt('\f')) {
      page.push_back(takeLine());
    } else {
      ++position_;
      if (!page.empty()) break;
    }
  }
  if (page.empty()) return std::nullopt;
  return page;
}

// A line ends at a line feed, before a form feed or before the character that does not fit. Spaces
// at the end of a line that is full, and in front of what would be an empty one, are left out.
TextLine TextPages::takeLine() {
  TextLine line;
  unsigned column = 0;
  while (position_ < text_.size() && !isAt('\f')) {
    if (isAt('\n') || isAt('\r')) {
      takeLineFeed();
      return line;
    }
    const auto [codePoint, bytes] = decode(text_, position_);
    const unsigned width = g_unichar_iswide(codePoint) ? 2 : 1;
    if (codePoint == '\t') {
      column = (column / kTabColumns + 1) * kTabColumns;
    } else if (isSpace(codePoint)) {
      column += width;
    } else if (isMark(codePoint) && continues(line, column)) {
      addMark(line.back().text, codePoint);
    } else if (!isInvisible(codePoint)) {
      if (column + width > columns_ && !line.empty()) return line;
      if (column + width > columns_) column = 0;
      line.push_back({column, width, {}});
      append(line.back().text, isControl(codePoint) ? kReplacement : codePoint);
      column += width;
    }
    position_ += bytes;
  }
  return line;
}

// CR LF is one, and so is a CR alone.
void TextPages::takeLineFeed() {
  const bool isReturn = isAt('\r');
  ++position_;
  if (isReturn && isAt('\n')) ++position_;
}

}  // namespace wren::app
