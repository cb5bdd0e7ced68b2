// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the debug images go and what they are called.
#pragma once

#include <cstddef>
#include <ctime>

/// Templates of a debug image's path: year, month, day, hour, minute, second and
/// the dump counter, none of them padded. The folder is fixed in dump_names.cpp.
extern const char* const kPrintedDumpFormat;
extern const char* const kOriginDumpFormat;
extern const char* const kDitheredDumpFormat;

/// Fills a template into room, which holds size bytes; a longer path is cut.
void formatDumpName(char* room, std::size_t size, const char* format, const std::tm& when,
                    long number);
