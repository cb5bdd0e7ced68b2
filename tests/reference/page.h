// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reference implementation of a page: from grey levels to printer commands, log lines and the two
// debug images, one step after the other, each in a buffer of its own.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

using Bytes = std::vector<std::uint8_t>;

/// One printer command and what it does, for readers of a failed comparison.
struct Command {
  Bytes bytes;
  std::string comment;
};

/// The bytes of all commands, concatenated.
Bytes bytesOf(const std::vector<Command>& commands);

/// The options of a printer object for one page.
struct PageOptions {
  int brightness = 0;  // -100 to 100
  int contrast = 0;    // -100 to 100
  int halftoneType = 0;
  bool negative = false;
  bool mirror = false;
  bool rotate180 = false;
  std::uint8_t removeBlankEdges = 0;
  std::uint64_t skipRightPixels = 0;
  std::uint32_t hwResolutionX = 203;
};

/// One debug image file.
struct Dump {
  std::string kind;  // "origin" or "dithered"
  Bytes bytes;
};

struct PageResult {
  std::vector<Command> commands;
  /// Lines on standard error, without their newlines. The address of the page is written ADDRESS.
  std::vector<std::string> log;
  std::vector<Dump> dumps;  // in the order of writing
};

/// One more than the index of the last row with ink; 0 when there is none.
std::uint64_t wrenImageCountBlankLinesFromBack(const std::uint8_t* data, std::uint64_t bytesPerLine,
                                               std::uint64_t height, std::uint64_t skipPixels,
                                               std::uint64_t stride);

/// One less than the index of the first row with ink, from row 1 on; `height` when there is none.
/// Row 0 is never tested.
std::uint64_t wrenImageCountBlankLinesFromFront(const std::uint8_t* data,
                                                std::uint64_t bytesPerLine, std::uint64_t height,
                                                std::uint64_t skipPixels, std::uint64_t stride);

/// Packs a bilevel page into bits, in place.
/// @return the number of packed bytes.
int GrayToMono(int bytesPerLine, int height, std::uint8_t* buffer, std::uint64_t skipRightPixels,
               std::vector<std::string>& log);

/// Halftones a grey page. `out` has height * bytesPerLine bytes, all 0 before the call. The
/// halftone type in `options` chooses between stencil and classic methods, `type` the classic
/// method.
std::int64_t PageProcess(const PageOptions& options, int type, const std::uint8_t* data,
                         int bytesPerLine, int width, int height, Bytes& out,
                         std::vector<std::string>& log);

/// The file of a debug image.
Bytes saveImage(const std::uint8_t* data, std::uint64_t bytesPerLine, std::uint64_t height,
                std::uint64_t width, unsigned bitsPerPixel);

/// The bit-image bands of a bilevel page, rows `width` bytes apart.
std::vector<Command> doPrintImage(const PageOptions& options, const std::uint8_t* data,
                                  std::uint64_t height, std::uint64_t width);

/// The whole page: blank edges, first debug image, halftone, second debug image, bands.
PageResult printImage(const PageOptions& options, const std::uint8_t* data,
                      std::uint64_t bytesPerLine, std::uint64_t height, std::uint64_t width);

}  // namespace reference
