// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job on disk, read back for judging: the raster that the filter was given,
// the PPD's options, and the bytes that came out.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/reference/job.h"

namespace job_files {

/// The whole file; throws std::runtime_error when it cannot be read.
reference::Bytes bytesOfFile(const std::string& path);

/// All pages of a CUPS raster file; throws std::runtime_error when it cannot be opened.
std::vector<reference::Page> rasterPages(const std::string& path);

/// The options of a PPD as they stand in its text, without those of a job.
reference::JobOptions ppdOptions(const std::string& path);

/// The bytes that the literal job writes for the options and pages.
reference::Bytes expectedBytes(const reference::JobOptions& options,
                               const std::vector<reference::Page>& pages);

/// One stretch of printed paper: `width` x `height` bytes, 1 for a dot.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> dots;
};

/// The paper of each page, cut to `heights` rows: what a page feeds at its end is left out.
std::vector<Picture> printedPages(const wren::escpos::Paper& paper,
                                  const std::vector<reference::Page>& pages);

}  // namespace job_files

