// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of commands (application/vnd.cups-command): drawer, buzzer, cut, feed and the self-test
// page, without a document.

#pragma once

#include <pappl/pappl.h>

#include "app/active_job.h"

namespace wren::app {

inline constexpr const char* kCommandFormat = "application/vnd.cups-command";

/// Takes jobs of that format, also those that come without a format. Each command writes the bytes
/// of job/printer_commands and nothing more. One that is not understood or not allowed is named in
/// the job's message, and the others are done; a job of which none can be done is aborted before
/// its first byte.
/// @param services outlive the system.
void acceptCommands(pappl_system_t* system, const char* printerFormat, const JobServices& services);

}  // namespace wren::app
