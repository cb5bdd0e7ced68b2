// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One run of the filter as the print system starts it: arguments, input, settings,
// side file, job, clean-up.
#pragma once

#include "filter/cancel_signal.h"

/// @param argv the program path, job id, user, title, copies, job options and, as an
///   option, the raster file; standard input is read without one.
/// @return the exit status: 0 when at least one page was printed or the job was
///   cancelled, 1 otherwise and after a page that is not 8 bits deep.
int runFilter(int argc, char** argv, const CancelSignal& cancel);
