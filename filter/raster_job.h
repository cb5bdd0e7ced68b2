// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints a CUPS raster stream: the job of the filter between its arguments and its exit
// status. The filter runs it once per process; the program `wren` runs it on a file.

#pragma once

#include <cstdio>

#include "filter/cancel_signal.h"
#include "job/settings.h"

namespace wren::filter {

struct RasterJob {
  int input = -1;                     ///< descriptor of the raster stream; not owned
  std::FILE* output = nullptr;        ///< for the printer bytes; not owned, not flushed
  const char* imageFolder = nullptr;  ///< for the debug images, if the settings ask for them
  /// Created or emptied, never written; null for none.
  const char* sideFile = nullptr;
};

/// @return whether the filter may report success: at least one page was printed and none was
///   unsupported, or the job was cancelled. A failed write shows in ferror(output) alone.
bool printRaster(const Settings& settings, const RasterJob& job, const CancelSignal& cancel);

}  // namespace wren::filter
