// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/blank_lines.h"

#include <cstring>

namespace {

unsigned long testedBytes(unsigned long bytesPerLine, unsigned long skipPixels) {
  return skipPixels <= bytesPerLine ? bytesPerLine - skipPixels : bytesPerLine;
}

// All bytes are 0 when the first one is and each equals its neighbour.
bool isBlank(const unsigned char* row, unsigned long count) {
  return count == 0 || (row[0] == 0 && std::memcmp(row, row + 1, count - 1) == 0);
}

}  // namespace

// Printed output depends on row 0 never being tested: one blank row stays above the
// content, and content that stands in row 0 alone is cut away. The row past the
// page, which the last step would test, counts as blank and is not read.
unsigned long wrenImageCountBlankLinesFromFront(const unsigned char* data,
                                                unsigned long bytesPerLine, unsigned long height,
                                                unsigned long skipPixels, unsigned long stride) {
  const unsigned long count = testedBytes(bytesPerLine, skipPixels);
  for (unsigned long row = 1; row < height; ++row) {
    if (!isBlank(data + row * stride, count)) return row - 1;
  }
  return height;
}

unsigned long wrenImageCountBlankLinesFromBack(const unsigned char* data,
                                               unsigned long bytesPerLine, unsigned long height,
                                               unsigned long skipPixels, unsigned long stride) {
  const unsigned long count = testedBytes(bytesPerLine, skipPixels);
  for (unsigned long end = height; end > 0; --end) {
    if (!isBlank(data + (end - 1) * stride, count)) return end;
  }
  return 0;
}
