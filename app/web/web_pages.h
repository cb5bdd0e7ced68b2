// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Puts our web pages beside those of PAPPL.

#pragma once

#include <pappl/pappl.h>

namespace wren::app::web {

/// Adds the files that all pages share: style sheet, script and examples.
void addSharedFiles(pappl_system_t* system);

/// Adds the pages of a new printer, with links on those of PAPPL.
void addPrinterPages(pappl_printer_t* printer);

}  // namespace wren::app::web
