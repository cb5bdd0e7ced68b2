// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/dump_names.h"

#include <cstdio>

// The one place that names the spool folder. A test program compiles this file
// again with a folder of its own; nothing else can change it.
#ifndef WREN_SPOOL_FOLDER
#define WREN_SPOOL_FOLDER "/var/spool/cups/tmp/"
#endif

const char* const kPrintedDumpFormat = WREN_SPOOL_FOLDER "prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp";
const char* const kOriginDumpFormat = WREN_SPOOL_FOLDER "origin_%d-%d-%d_%d_%d_%d_%ld.bmp";
const char* const kDitheredDumpFormat = WREN_SPOOL_FOLDER "dithered_%d-%d-%d_%d_%d_%d_%ld.bmp";

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

DumpPath formatDumpPath(const char* format, const std::tm& when, long number) {
  DumpPath path = {};
  std::snprintf(path.text, sizeof path.text, format, when.tm_year + 1900, when.tm_mon + 1,
                when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec, number);
  return path;
}

#pragma GCC diagnostic pop
