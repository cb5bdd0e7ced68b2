// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The blank-line counters and the debug images on small pages of any shape,
// against their reference implementations.

#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "printer/blank_lines.h"
#include "printer/debug_image.h"
#include "tests/reference/page.h"

namespace {

using fuzz::check;

struct Shape {
  unsigned long bytesPerLine;
  unsigned long width;
  unsigned long height;
  unsigned long skip;
};

void compareCounters(const std::vector<std::uint8_t>& page, const Shape& shape) {
  // The stride is `width` here, as in the page pipeline.
  check(wrenImageCountBlankLinesFromFront(page.data(), shape.bytesPerLine, shape.height, shape.skip,
                                          shape.width) ==
            reference::wrenImageCountBlankLinesFromFront(page.data(), shape.bytesPerLine,
                                                         shape.height, shape.skip, shape.width),
        "the count from the front is that of the reference implementation");
  check(wrenImageCountBlankLinesFromBack(page.data(), shape.bytesPerLine, shape.height, shape.skip,
                                         shape.width) ==
            reference::wrenImageCountBlankLinesFromBack(page.data(), shape.bytesPerLine,
                                                        shape.height, shape.skip, shape.width),
        "the count from the back is that of the reference implementation");
}

void compareImage(const std::vector<std::uint8_t>& page, const Shape& shape,
                  unsigned short bitsPerPixel) {
  static fuzz::MemoryFile file;
  file.clear();
  wren::printer::PageMemory rows;
  wren::printer::writeImage(file.descriptor(),
                            {page.data(), shape.bytesPerLine, shape.height, shape.width},
                            bitsPerPixel, rows);
  check(file.content() == reference::saveImage(page.data(), shape.bytesPerLine, shape.height,
                                               shape.width, bitsPerPixel),
        "the debug image is that of the reference implementation");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned long width = 1 + input.below(80);
  const unsigned long padding = input.below(2) == 0 ? 0 : input.below(9);
  const unsigned long skip = input.byte();
  const Shape shape = {width + padding, width, input.left() / (width + padding), skip};
  // With padding, because the last row is read beyond its width.
  std::vector<std::uint8_t> page = input.bytes(shape.bytesPerLine * shape.height);
  compareCounters(page, shape);
  compareImage(page, shape, 8);
  compareImage(page, shape, 1);
  return 0;
}
