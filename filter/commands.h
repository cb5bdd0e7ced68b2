// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Wrappers of job/control_commands that write to standard output. Only tests call them.

#pragma once

#include <cups/raster.h>

#include "job/control_commands.h"
#include "job/settings.h"

/// Writes the bytes of a command.
void outputCommand(command cmd);

/// Before the first page: initialisation, buzzer set-up, direction, buzzer 2, drawer.
void jobSetup(Settings s);

/// Before the pixels of a page are read: buzzer 1. The header is not used.
void pageSetup(Settings s, cups_page_header2_s header);

/// After the bands of a page: feed, buzzer 1, page cut.
void endPage(Settings s);

/// After the last page: feed and document cut, buzzer 2, drawer, buzzer reset.
void endJob(Settings s);
