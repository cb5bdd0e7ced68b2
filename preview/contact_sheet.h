// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A contact sheet: pictures of the same document side by side, for comparison.

#pragma once

#include <string>
#include <vector>

#include "preview/picture.h"

namespace wren::preview {

struct SheetCell {
  std::string label;  ///< printable ASCII
  Picture picture;
};

struct SheetRow {
  std::string heading;  ///< printable ASCII; empty: none
  std::vector<SheetCell> cells;
};

/// Arranges the pictures on white paper: the headings of the rows, and each picture in a frame with
/// its label above it. All pictures have the same scale: one pixel per pixel, or less where a row
/// would not fit the width. A row of many cells continues on a further line, so that a cell stays
/// wide enough for a label. A long row is cut into parts of about a screen, each with its heading
/// ("2 of 3") and labels.
/// @param maxWidthPx the sheet is at most this wide; below 64, it is 64.
/// @return an empty picture if there is no cell.
Picture drawContactSheet(const std::vector<SheetRow>& rows, int maxWidthPx);

}  // namespace wren::preview
