// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// How a printer is, for people: as a page of its web interface and as a line of text for the
// `status` sub-command. Shows the drawer too, for which IPP has no attribute.

#pragma once

#include <pappl/pappl.h>

#include <string>
#include <string_view>

#include "app/known_printer.h"

namespace wren::app {

/// One line without its end: "ready; drawer closed".
/// @param drawerLevel a value of the attribute drawer-level.
std::string conditionText(const PrinterCondition& condition, std::string_view drawerLevel);

/// Adds both pages to a new printer; the callback of papplSystemSetPrinterDrivers.
void addStatusPages(pappl_printer_t* printer, void* data);

}  // namespace wren::app
