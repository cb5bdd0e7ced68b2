// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Plain text as clients send it: any bytes become pages whose lines fit.

#include "app/text_pages.h"

#include <algorithm>
#include <string>

#include "fuzz/input.h"

namespace {

using fuzz::check;

// Overlong forms and surrogates are left to the tests of the unit.
bool isUtf8(const std::string& text) {
  std::size_t following = 0;
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (following > 0) {
      if ((byte & 0xC0) != 0x80) return false;
      --following;
    } else if (byte >= 0x80) {
      if (byte < 0xC2 || byte > 0xF4) return false;
      following = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
    }
  }
  return following == 0;
}

bool hasOnlyTextBytes(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    const bool isControl = static_cast<std::uint8_t>(c) < ' ' || c == 0x7F;
    return !isControl || c == '\t' || c == '\n' || c == '\r' || c == '\f';
  });
}

void checkLine(const wren::app::TextLine& line, unsigned columns) {
  unsigned next = 0;
  for (const wren::app::TextCell& cell : line) {
    check(cell.column >= next, "the cells are in their order");
    check(cell.columns == 1 || cell.columns == 2, "a cell has one column or two");
    next = cell.column + cell.columns;
    check(next <= columns, "a line fits");
    check(!cell.text.empty() && isUtf8(cell.text), "a cell is UTF-8");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned columns = 2 + input.below(64);
  const std::size_t maxLines = 1 + input.below(40);
  const std::vector<std::uint8_t> bytes = input.rest();
  const std::string text(bytes.begin(), bytes.end());
  check(!wren::app::isTextHead(text) || hasOnlyTextBytes(text), "text has no control bytes");
  wren::app::TextPages pages(text, columns, maxLines);
  std::size_t count = 0;
  while (const auto page = pages.next()) {
    check(++count <= text.size(), "each page takes some of the text");
    check(!page->empty() && page->size() <= maxLines, "a page has lines, and no more than fit");
    for (const wren::app::TextLine& line : *page) checkLine(line, columns);
  }
  return 0;
}
