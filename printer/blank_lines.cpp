// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/blank_lines.h"

#include <cstring>

namespace {

unsigned long testedBytes(unsigned long bytesPerLine, unsigned long skipPixels) {
  return skipPixels <= bytesPerLine ? bytesPerLine - skipPixels : bytesPerLine;
}

// All bytes are 0 if the first one is 0 and each equals its neighbour.
bool isBlank(const unsigned char* row, unsigned long count) {
  return count == 0 || (row[0] == 0 && std::memcmp(row, row + 1, count - 1) == 0);
}

}  // namespace

// Printed output depends on row 0 not being tested: one blank row stays above the content,
// and content in row 0 alone is cut off. The row past the page counts as blank and is not
// read.
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
