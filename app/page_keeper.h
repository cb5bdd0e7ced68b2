// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Keeps every page that is handed to the core as a CUPS raster file, for tests and for
// judging a page without its dots. Off in an installed application.

#pragma once

#include <cups/raster.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "app/begun_jobs.h"

namespace wren::app {

class PageKeeper {
 public:
  /// @param folder exists; empty keeps nothing.
  explicit PageKeeper(std::string folder) : folder_(std::move(folder)) {}

  /// Writes "page-000001-printer-1-job-1.ras" and so on: the order of the names is that of
  /// printing, also across jobs and printers, which may print in several threads.
  /// @param levels `header.cupsHeight` rows of `header.cupsBytesPerLine` bytes.
  /// @return false if the file cannot be written.
  bool keep(const JobKey& job, cups_page_header2_s header, const std::uint8_t* levels);

 private:
  std::string folder_;
  std::atomic<unsigned> pages_ = 0;
};

}  // namespace wren::app
