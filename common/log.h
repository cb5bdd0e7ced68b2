// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The messages of the filter. The print system reads standard error line by
// line and sorts the lines by their leading keyword. It shares that stream with
// every other filter of the chain, so each message here leaves in one write.
#pragma once

#ifdef __GNUC__
#define WREN_PRINTF_LIKE(text, first) __attribute__((format(printf, text, first)))
#else
#define WREN_PRINTF_LIKE(text, first)
#endif

extern "C" {

/// Writes one line to standard error: the keyword of the level, the message as
/// printf would write it, and a newline. Nothing stands between keyword and
/// message, and the newline is added even where the format ends in one.
/// @param level 0 and 1 "DEBUG:", 2 "WARN:", 3 "ERROR:", 4 "CRIT:"; 5 and
///   everything else "INVALID:".
/// Write errors are ignored; a message has no length limit.
void wrenLogCommon(int level, const char* format, ...) WREN_PRINTF_LIKE(2, 3);

/// Writes a message to standard error as it stands: no keyword, no newline added.
void wrenWriteMessage(const char* format, ...) WREN_PRINTF_LIKE(1, 2);
}
