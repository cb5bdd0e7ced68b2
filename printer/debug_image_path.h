// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the debug images go and what they are called.

#pragma once

#include <cstddef>
#include <ctime>
#include <string_view>

namespace wren::printer {

/// The folder of the debug images unless a printer object is told otherwise: the print
/// system's own folder for temporary files, which it empties when it starts.
inline constexpr char kSpoolFolder[] = "/var/spool/cups/tmp/";

/// The name of a debug image, as a printf template: year, month, day, hour, minute, second
/// and the number of the image, none of them padded.
inline constexpr char kPrintedImageName[] = "prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp";
inline constexpr char kOriginImageName[] = "origin_%d-%d-%d_%d_%d_%d_%ld.bmp";
inline constexpr char kDitheredImageName[] = "dithered_%d-%d-%d_%d_%d_%d_%ld.bmp";

/// Writes the template of a path: the folder, a slash if it does not end with one, and the
/// name. Every percent sign of the folder is doubled, so that it stays itself.
/// @param format `size` bytes; an empty text if the template does not fit.
/// @return whether it fits.
bool makeImageFormat(std::string_view folder, std::string_view name, char* format,
                     std::size_t size);

/// The path of a debug image.
struct DebugImagePath {
  char text[1280];
};

/// Fills a template in; a longer path is cut.
DebugImagePath formatImagePath(const char* format, const std::tm& when, long number);

}  // namespace wren::printer
