// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer control commands around a job and around each page. All bytes go to
// standard output, in call order with what the printer object writes there.
#pragma once

#include <cups/raster.h>

#include <cstddef>

#include "filter/settings.h"

/// A printer control command.
struct command {
  std::size_t length = 0;
  const unsigned char* bytes = nullptr;  ///< null when length is 0
};

/// Writes the bytes of a command.
void outputCommand(command cmd);

/// Before the first page: initialisation, buzzer set-up, direction, buzzer 2, drawer.
void jobSetup(Settings s);

/// Before the pixels of a page are read: buzzer 1. The header is not used.
void pageSetup(Settings s, cups_page_header2_s header);

/// After the raster of a page: feed, buzzer 1, page cut.
void endPage(Settings s);

/// After the last page: feed and document cut, buzzer 2, drawer, buzzer reset.
void endJob(Settings s);

/// Instead of endPage and endJob once the job is cancelled: the feed of a page end,
/// then endJob without buzzer 2 and drawer.
void endCancelledJob(Settings s);
