// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Turns a page of any width into one of the width of the print head, row by row. A page no
// wider than the paper keeps its pixels: it is centred and cut to the head. A wider one is
// scaled down to the head, or cut as well.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "app/area_scaler.h"
#include "app/page_target.h"

namespace wren::app {

class PageComposer {
 public:
  /// A page of `heightPx` rows of `widthPx` pixels, both at least 1. Throws std::bad_alloc.
  PageComposer(const PageTarget& target, unsigned widthPx, unsigned heightPx);

  PageComposer(const PageComposer&) = delete;
  PageComposer& operator=(const PageComposer&) = delete;

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

  unsigned widthPx_;
  unsigned heightPx_;
  unsigned headWidthPx_;
  unsigned composedHeightPx_;
  unsigned rowsAdded_ = 0;
  std::vector<std::uint8_t> levels_;
  std::optional<AreaScaler> scaler_;  // into `levels_`
};

}  // namespace wren::app
