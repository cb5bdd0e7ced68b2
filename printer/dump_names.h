// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the debug images go and what they are called.
#pragma once

#include <ctime>

/// Templates of a debug image's path: year, month, day, hour, minute, second and
/// the dump counter, none of them padded. The folder is fixed in dump_names.cpp.
extern const char* const kPrintedDumpFormat;
extern const char* const kOriginDumpFormat;
extern const char* const kDitheredDumpFormat;

/// The path of a debug image.
struct DumpPath {
  char text[1280];
};

/// Fills a template; a longer path is cut.
DumpPath formatDumpPath(const char* format, const std::tm& when, long number);
