// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer control commands around a job and around each page (ESC/POS). They are written
// to the stream given, in call order with what the printer object writes there. Write errors
// show in ferror of the stream alone.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "job/settings.h"

/// A printer control command.
struct command {
  std::size_t length = 0;
  const unsigned char* bytes = nullptr;  ///< constant bytes; null if length is 0
};

namespace wren::job {

/// Feed units of one millimetre at 203 dpi (1.001 mm); a unit is half a dot row.
inline constexpr std::uint32_t kFeedUnitsPerMm = 16;

/// Values of `Settings::docCutType` and `Settings::pageCutType` that cut.
inline constexpr std::int32_t kFullCutType = 1;
inline constexpr std::int32_t kPartialCutType = 2;

/// Writes the bytes of a command.
void writeCommand(FILE* out, const command& cmd);

// The parts of a job, one by one, for commands without a page.

void writeInitialise(FILE* out);

void writeDirection(FILE* out, const Settings& s);

/// The pulse for the drawer; false, and no byte, if the printer has no such pulse.
bool writeDrawer(FILE* out, const Settings& s);

/// Switches the buzzer on, sounds it and switches it off. Values above 9 become 1.
void writeBeep(FILE* out, std::int32_t onTime, std::int32_t repeat);

/// Feeds any number of units, in as few commands as it takes; none for 0.
void writeFeed(FILE* out, std::uint32_t units);

/// The feed before the cut of a document, unless it is 0, and a cut; false, and no byte, if
/// `cutType` does not cut.
bool writeFeedAndCut(FILE* out, const Settings& s, std::int32_t cutType);

/// The feed and the cut at the end of a job, as the settings have them.
void writeDocumentCut(FILE* out, const Settings& s);

/// The feed at the end of each page.
void writePageFeed(FILE* out);

// The commands around a job and around each page.

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
