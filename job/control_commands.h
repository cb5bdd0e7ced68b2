// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer control commands around a job and around each page (ESC/POS). They are written
// to the stream given, in call order with what the printer object writes there. Write errors
// show in ferror of the stream alone.

#pragma once

#include <cstddef>
#include <cstdio>

#include "job/settings.h"

/// A printer control command.
struct command {
  std::size_t length = 0;
  const unsigned char* bytes = nullptr;  ///< constant bytes; null if length is 0
};

namespace wren::job {

/// Writes the bytes of a command.
void writeCommand(FILE* out, const command& cmd);

/// Before the first page: initialisation, buzzer set-up, direction, buzzer 2, drawer.
void writeJobSetup(FILE* out, const Settings& s);

/// Before the pixels of a page are read: buzzer 1.
void writePageSetup(FILE* out, const Settings& s);

/// After the bands of a page: feed, buzzer 1, page cut.
void writePageEnd(FILE* out, const Settings& s);

/// After the last page: feed and document cut, buzzer 2, drawer, buzzer reset.
void writeJobEnd(FILE* out, const Settings& s);

/// In place of the page end and the job end once the job is cancelled: the feed of a page end,
/// then the job end without buzzer 2 and drawer.
void writeCancelledJobEnd(FILE* out, const Settings& s);

}  // namespace wren::job
