// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer control commands on standard output, under the names by which the filter knows
// them. A job writes the same bytes through job/control_commands to the stream that it is
// given; only tests call these.

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
