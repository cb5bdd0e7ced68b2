// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Turns a page of any width into one of the width of the print head, row by row. A page no
// wider than the paper keeps its pixels: it is centred and cut to the head. A wider one is
// scaled down to the head, or cut as well.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/page_target.h"

namespace wren::app {

class PageComposer {
 public:
  /// A page of `heightPx` rows of `widthPx` pixels, both at least 1. Throws std::bad_alloc.
  PageComposer(const PageTarget& target, unsigned widthPx, unsigned heightPx);

  /// Takes the next row: `widthPx` levels. Rows beyond `heightPx` are ignored.
  void addRow(const std::uint8_t* ink);

  /// Whether every row was added.
  bool isComplete() const { return rowsAdded_ == heightPx_; }

  unsigned widthPx() const { return headWidthPx_; }

  /// Rows of the composed page. A page that is not scaled has as many as came in; a scaled one
  /// keeps its proportions and has at least one.
  unsigned heightPx() const { return composedHeightPx_; }

  /// The composed page: `heightPx` rows of `widthPx` levels; paper where no row was added yet.
  std::vector<std::uint8_t>& levels() { return levels_; }

 private:
  void placeRow(const std::uint8_t* ink);
  void scaleRow(const std::uint8_t* ink);
  void addToSums(const std::uint8_t* ink, std::uint64_t weight);
  void finishScaledRow();

  unsigned widthPx_;
  unsigned heightPx_;
  unsigned headWidthPx_;
  unsigned composedHeightPx_;
  std::uint64_t area_;  // of the page: the weight of one composed dot
  bool scaled_;
  unsigned rowsAdded_ = 0;
  unsigned rowsComposed_ = 0;
  std::vector<std::uint8_t> levels_;
  std::vector<std::uint64_t> sums_;  // one row: level x area, while the page is scaled
};

}  // namespace wren::app
