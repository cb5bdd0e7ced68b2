// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The documents that PAPPL spools before they are printed: PDF, pictures and text, each read on
// the thread of its job.

#pragma once

#include <pappl/pappl.h>

#include "app/active_job.h"

namespace wren::app {

/// Makes the system accept every format of app/document.h.
/// @param printerFormat the format of the printers' own, into which PAPPL has them turned.
/// @param services outlives the system.
void acceptDocuments(pappl_system_t* system, const char* printerFormat,
                     const JobServices& services);

}  // namespace wren::app
