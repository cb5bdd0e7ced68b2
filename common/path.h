// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The file name in a path, for texts that users read.

#pragma once

extern "C" {

/// The text after the last slash or backslash, whichever comes later; the whole path if
/// it has neither. The result points into `path`; null gives null.
const char* wrenPathGetBasename(const char* path);
}
