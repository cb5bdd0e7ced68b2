// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the content of a page starts and ends. Both counters look at the first
// `bytesPerLine - skipPixels` bytes of a row, at all of them if `skipPixels` is larger than
// `bytesPerLine`. A row is blank if these bytes are all 0. Rows are `stride` bytes apart, and
// `data` holds `height` rows.

#pragma once

extern "C" {

/// The index of the row just above the first row with content. Rows 1, 2, ... are tested,
/// row 0 never is: if row k + 1 is the first with content, the result is k. `height` if none
/// of them has content.
unsigned long wrenImageCountBlankLinesFromFront(const unsigned char* data,
                                                unsigned long bytesPerLine, unsigned long height,
                                                unsigned long skipPixels, unsigned long stride);

/// The index just past the last row with content; 0 if every row is blank.
unsigned long wrenImageCountBlankLinesFromBack(const unsigned char* data,
                                               unsigned long bytesPerLine, unsigned long height,
                                               unsigned long skipPixels, unsigned long stride);
}
