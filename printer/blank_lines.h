// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the content of a page starts and ends. Both counters look at the first
// bytesPerLine - skipPixels bytes of a row (at all of them when the skip is the
// larger number); a row is blank when these are all 0. Rows are stride bytes apart,
// and data holds height rows.
#pragma once

extern "C" {

/// The index of the row just above the first row with content: rows 1, 2, ... are
/// tested, never row 0, and for content first met in row k + 1 the result is k.
/// height when none of them has content.
unsigned long wrenImageCountBlankLinesFromFront(const unsigned char* data,
                                                unsigned long bytesPerLine, unsigned long height,
                                                unsigned long skipPixels, unsigned long stride);

/// The index just past the last row with content; 0 when every row is blank.
unsigned long wrenImageCountBlankLinesFromBack(const unsigned char* data,
                                               unsigned long bytesPerLine, unsigned long height,
                                               unsigned long skipPixels, unsigned long stride);
}
