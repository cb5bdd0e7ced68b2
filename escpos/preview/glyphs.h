// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Letters for the margin of a picture: digits, lower case and blank, drawn on
// a grid of five by seven. Not a font for documents.

#pragma once

#include <string_view>

namespace preview {

inline constexpr unsigned kGlyphColumns = 5;
inline constexpr unsigned kGlyphRows = 7;
/// From one letter to the next, in grid columns.
inline constexpr unsigned kGlyphAdvance = 6;

/// Whether `text`, drawn on the grid, is set at this column and row. A letter that does not exist
/// is blank; so is every place outside the text.
bool textPixel(std::string_view text, unsigned column, unsigned row);

}  // namespace preview
