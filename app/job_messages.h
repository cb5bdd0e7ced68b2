// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Why jobs ended, kept beside the saved state: PAPPL saves no messages, so that after a restart a
// failed job would say no more than "Job aborted.".

#pragma once

#include <pappl/pappl.h>

#include <string>

namespace wren::app {

/// A line `PRINTER-ID JOB-ID MESSAGE` for each ended job that has a message.
std::string endedMessages(pappl_system_t* system);

/// Gives ended jobs their messages of such lines. An aborted one without a line (the process was
/// killed between its end and the next save) gets a message that says so.
void restoreMessages(pappl_system_t* system, const std::string& text);

}  // namespace wren::app
