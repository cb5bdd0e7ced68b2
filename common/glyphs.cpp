// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/glyphs.h"

namespace wren {

bool textPixel(std::string_view text, unsigned column, unsigned row) {
  const unsigned index = column / kGlyphAdvance;
  if (index >= text.size() || row >= kGlyphRows) return false;
  const char letter = text[index];
  if (letter < kFirstGlyph || letter > kLastGlyph) return false;
  const auto glyph = static_cast<std::size_t>(letter - kFirstGlyph);
  const unsigned bit = kGlyphColumns - 1 - column % kGlyphAdvance;
  return ((kGlyphs[glyph][row] >> bit) & 1) != 0;
}

}  // namespace wren
