// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One run of the filter as the print system starts it: arguments, input, settings, side
// file, job, clean-up.

#pragma once

#include "filter/cancel_signal.h"

namespace wren::filter {

/// @param argv the program path, job id, user, title, copies, job options and, optionally, the
///   raster file; without one standard input is read.
/// @param imageFolder where the debug images go, if the PPD or the job does not turn them off.
/// @return the exit status: 0 if at least one page was printed or the job was cancelled, 1
///   otherwise and after a page that does not have 8 bits per pixel.
int runFilter(int argc, char** argv, const CancelSignal& cancel, const char* imageFolder);

}  // namespace wren::filter
