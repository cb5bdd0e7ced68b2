// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Commands for a printer that print no document: open the drawer, beep, cut, feed, print the
// self-test page. Each writes exactly the bytes that it needs, without the zero bytes, the set-up
// and the end of a job.

#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "common/cancel_check.h"
#include "job/settings.h"

namespace wren::job {

enum class CommandKind { kOpenDrawer, kBeep, kCut, kFeed, kPrintSelfTestPage };

/// The names of the commands as command files and the PPDs (`cupsCommands`) have them, by the
/// values of `CommandKind`.
inline constexpr std::array<const char*, 5> kCommandNames = {"OpenDrawer", "Beep", "Cut", "Feed",
                                                             "PrintSelfTestPage"};

/// The longest paper that one Feed moves, in mm.
inline constexpr std::int32_t kMaxFeedMm = 1000;

struct PrinterCommand {
  CommandKind kind = CommandKind::kOpenDrawer;
  /// Of Cut: `kFullCutType`, `kPartialCutType`, or nothing for the cut of the queue
  /// (`Settings::docCutType`). Of Feed: 1 to `kMaxFeedMm` millimetres. Otherwise nothing.
  std::optional<std::int32_t> value;

  bool operator==(const PrinterCommand&) const = default;
};

/// Writes the bytes of a command:
///   OpenDrawer         1B 70 00 t 32, the pulse of the settings
///   Beep               buzzer on, 1B 42 with the repeat count and on-time of buzzer 2 (1 where
///                      the printer lacks the option), buzzer off
///   Cut                the feed before the document cut, unless it is 0, and the cut
///   Feed               1B 4A n, as often as it takes
///   PrintSelfTestPage  1B 40, direction, the page (job/self_test_page), and page feed, document
///                      feed and cut as at the end of a job
/// @param out stays open and is not flushed; a failed write shows in ferror alone.
/// @param cancel stops the self-test page between two bands; its feed and cut are still written.
/// @return null, or why nothing is written: the settings lack what the command needs. A constant
///   text.
const char* writePrinterCommand(FILE* out, const PrinterCommand& command, const Settings& settings,
                                CancelCheck cancel = {});

}  // namespace wren::job
