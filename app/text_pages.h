// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Lays text out in cells: pages of lines of characters at their columns. No fonts here.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wren::app {

/// Whether the first bytes of a document are plain text: at least one byte, UTF-8, of which the
/// last character may be cut off, without control characters but tabs and ends of lines and pages.
bool isTextHead(std::string_view head);

/// What is drawn as one: a character with its combining marks.
struct TextCell {
  unsigned column;   ///< the first one; 0 is at the left
  unsigned columns;  ///< 1, or 2 for East Asian wide characters
  std::string text;  ///< UTF-8
};

/// Spaces have no cells.
using TextLine = std::vector<TextCell>;
using TextPage = std::vector<TextLine>;

class TextPages {
 public:
  /// @param text UTF-8; a byte order mark is left out. Bytes that are no UTF-8 and control
  /// characters become U+FFFD, one each.
  /// @param columns of a line, at least 2. What does not fit goes on in the next line.
  /// @param maxLines of a page, at least 1.
  TextPages(std::string text, unsigned columns, std::size_t maxLines);

  /// The next page, with at least one line; nothing at the end. A page ends at a form feed, or when
  /// it is full. Form feeds without text between them are one.
  std::optional<TextPage> next();

 private:
  TextLine takeLine();
  void takeLineFeed();
  bool isAt(char byte) const { return position_ < text_.size() && text_[position_] == byte; }

  std::string text_;
  std::size_t position_ = 0;
  unsigned columns_;
  std::size_t maxLines_;
};

}  // namespace wren::app
