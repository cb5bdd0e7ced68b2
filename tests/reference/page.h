// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One page in memory: from grey bytes to printer commands, log lines and the two
// debug images, step by step and with every page-sized buffer spelt out.

#ifndef WREN_TESTS_REFERENCE_PAGE_H_
#define WREN_TESTS_REFERENCE_PAGE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;

/// One printer command, with the words that a reader of the bytes wants to see beside it.
struct Command {
  Bytes bytes;
  std::string comment;
};

/// The bytes of all commands in a row.
Bytes bytesOf(const std::vector<Command>& commands);

/// What a printer object holds while it prints a page.
struct PageOptions {
  int brightness = 0;  // -100 to 100
  int contrast = 0;    // -100 to 100
  int halftoneType = 0;
  bool negative = false;
  bool mirror = false;
  bool rotate180 = false;
  uint8_t removeBlankEdges = 0;
  uint64_t skipRightPixels = 0;
  uint32_t hwResolutionX = 203;
};

/// One debug image: which of the two it is and the bytes of its file.
struct Dump {
  std::string kind;  // "origin" or "dithered"
  Bytes bytes;
};

struct PageResult {
  std::vector<Command> commands;
  /// Lines on standard error, without their newlines. The address of the page reads ADDRESS.
  std::vector<std::string> log;
  std::vector<Dump> dumps;  // in the order in which they are written
};

/// Index just past the last row with a dot; 0 when there is none.
uint64_t wrenImageCountBlankLinesFromBack(const uint8_t* data, uint64_t bytesPerLine,
                                          uint64_t height, uint64_t skipPixels, uint64_t stride);

/// One less than the index of the first row from row 1 on that has a dot; `height` when there is
/// none. Row 0 is never tested.
uint64_t wrenImageCountBlankLinesFromFront(const uint8_t* data, uint64_t bytesPerLine,
                                           uint64_t height, uint64_t skipPixels, uint64_t stride);

/// Packs a page of bytes into bits in place and returns the number of packed bytes.
int GrayToMono(int bytesPerLine, int height, uint8_t* buffer, uint64_t skipRightPixels,
               std::vector<std::string>& log);

/// Turns the grey page into dots. `out` has height x bytesPerLine bytes, all 0 before the call.
/// Which branch runs follows from `options`, the classic method from `type`.
int64_t PageProcess(const PageOptions& options, int type, const uint8_t* data, int bytesPerLine,
                    int width, int height, Bytes& out, std::vector<std::string>& log);

/// The file of a debug image.
Bytes saveImage(const uint8_t* data, uint64_t bytesPerLine, uint64_t height, uint64_t width,
                unsigned bitsPerPixel);

/// The bit-image bands of a page of dots, rows `width` bytes apart.
std::vector<Command> doPrintImage(const PageOptions& options, const uint8_t* data, uint64_t height,
                                  uint64_t width);

/// The whole way of a page: trim, dump, halftone, dump, encode.
PageResult printImage(const PageOptions& options, const uint8_t* data, uint64_t bytesPerLine,
                      uint64_t height, uint64_t width);

}  // namespace reference

#endif  // WREN_TESTS_REFERENCE_PAGE_H_
