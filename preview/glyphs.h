// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A 5 x 7 bitmap font for the margins of a picture: digits, lower-case letters
// and the space. It is not used for documents.

#pragma once

#include <string_view>

namespace wren::preview {

inline constexpr unsigned kGlyphColumns = 5;
inline constexpr unsigned kGlyphRows = 7;
/// Distance from one letter to the next, in font pixels.
inline constexpr unsigned kGlyphAdvance = 6;

/// Whether the font pixel at `column` and `row` of `text` is set. Characters without a glyph and
/// positions outside the text are blank.
bool textPixel(std::string_view text, unsigned column, unsigned row);

}  // namespace wren::preview
