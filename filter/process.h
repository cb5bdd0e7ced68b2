// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a filter needs of its process: standard descriptors that are open, an end that sends what is
// complete if memory runs out, and the signal that cancels a job. For `main` alone.

#pragma once

#include "filter/cancel_signal.h"

namespace wren::filter {

/// Prepares this process. To be called once, before anything is opened.
///
/// - A closed standard descriptor is opened on /dev/null.
/// - Out of memory: the commands that are complete in the buffer are sent, one line is logged, and
///   the process ends with status 1.
/// - SIGTERM ends the process with status 0 until the job has begun, and cancels the job
/// afterwards.
/// - Standard output gets a buffer of 64 KiB.
/// @return what tells the job that it is cancelled.
CancelSignal prepareProcess();

}  // namespace wren::filter
