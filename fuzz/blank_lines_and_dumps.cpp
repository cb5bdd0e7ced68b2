// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The blank-line counters and the debug images on small pages of any shape,
// against their reference implementations.

#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "printer/blank_lines.h"
#include "printer/debug_image.h"
#include "printer/dot_bands.h"
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

// The same dots in bands, as the printer of a job has them.
void compareBandImage(const std::vector<std::uint8_t>& page, const Shape& shape) {
  static fuzz::MemoryFile file;
  file.clear();
  wren::printer::DotBands bands;
  check(bands.resize(shape.width, shape.height), "there is memory for the bands");
  std::vector<std::uint8_t> dots(shape.width * shape.height);
  for (std::size_t i = 0; i < bands.bandCount(); ++i) {
    for (std::size_t x = 0; x < shape.width; ++x) {
      unsigned column = 0;
      for (std::size_t row = 0; row < bands.rowsOfBand(i); ++row) {
        const std::size_t y = i * wren::printer::kRowsPerBand + row;
        const bool isDot = page[y * shape.bytesPerLine + x] >= 128;
        column |= isDot ? 0x80U >> row : 0;
        dots[y * shape.width + x] = isDot ? 255 : 0;
      }
      bands.band(i)[x] = static_cast<std::uint8_t>(column);
    }
  }
  wren::printer::PageMemory rows;
  wren::printer::writeBandImage(file.descriptor(), bands, rows);
  check(file.content() ==
            reference::saveImage(dots.data(), shape.width, shape.height, shape.width, 1),
        "the image of the bands is that of the reference implementation");
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
  compareBandImage(page, shape);
  return 0;
}
