// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// From raster pages to printer bytes: runs the library of the filter in this process.

#pragma once

#include <cstdio>
#include <string>

namespace wren::cli {

struct PrintedPages {
  bool success = false;
  unsigned pages = 0;
  std::string error;  ///< the last error of the filter
};

/// Prints a raster file with the options of a filter's fifth argument.
/// @param out for the printer bytes; stays open and is not flushed.
/// @param imageFolder for the debug images, if the options ask for them.
PrintedPages printRasterFile(const std::string& ppd, const std::string& options,
                             const std::string& rasterPath, std::FILE* out,
                             const std::string& imageFolder);

}  // namespace wren::cli
