// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Text of fixed width: in the margins of a drawn paper, on a contact sheet and on the
// self-test page. It is not used for documents.

#pragma once

#include <string_view>

#include "common/font_12x24.h"

namespace wren {

/// Distance from one letter to the next, in font pixels.
inline constexpr unsigned kGlyphAdvance = kGlyphColumns;

/// Whether the font pixel at `column` and `row` of `text` is set. Characters other than printable
/// ASCII and positions outside the text are blank.
bool textPixel(std::string_view text, unsigned column, unsigned row);

}  // namespace wren
