// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Draws characters into cells of whole dots, each dot ink or paper, with the monospaced font of
// the system. Characters that it lacks come from other installed fonts.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace wren::app {

class CharacterCells {
 public:
  /// @param cellWidthPx of one column, at least 4.
  /// @param language as in RFC 5646, for forms that differ between languages; may be empty.
  /// Throws DocumentError (kSystem) if no font is installed.
  CharacterCells(unsigned cellWidthPx, const std::string& language);
  CharacterCells(const CharacterCells&) = delete;
  CharacterCells& operator=(const CharacterCells&) = delete;
  ~CharacterCells();

  unsigned cellWidthPx() const { return cellWidthPx_; }
  unsigned cellHeightPx() const { return cellHeightPx_; }

  /// A character with its marks, in the middle of `columns` cells: `cellHeightPx()` rows of
  /// `columns * cellWidthPx()` levels, 0 or 255. Valid until the next call.
  const std::vector<std::uint8_t>& draw(const std::string& character, unsigned columns);

 private:
  struct Drawing;

  std::vector<std::uint8_t> drawNew(const std::string& character, unsigned columns) const;

  unsigned cellWidthPx_;
  unsigned cellHeightPx_ = 0;
  std::unique_ptr<Drawing> drawing_;
  std::unordered_map<std::string, std::vector<std::uint8_t>> drawn_;
};

}  // namespace wren::app
