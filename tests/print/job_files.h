// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads the files of a job: the raster for the filter, the options of the PPD and
// the printer bytes.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/reference/job.h"

namespace job_files {

/// The whole file. Throws std::runtime_error if it cannot be read.
reference::Bytes bytesOfFile(const std::string& path);

/// All pages of a CUPS raster file. Throws std::runtime_error if it cannot be opened.
std::vector<reference::Page> rasterPages(const std::string& path);

/// The options in the text of a PPD, without options of a job. Throws std::runtime_error if the
/// file cannot be read.
reference::JobOptions ppdOptions(const std::string& path);

/// The printer bytes of the reference implementation for the options and pages.
reference::Bytes expectedBytes(const reference::JobOptions& options,
                               const std::vector<reference::Page>& pages);

/// The dots of a page: `width` x `height` bytes, 1 for a dot.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> dots;
};

/// The dots of each page on the paper, in the size of its raster: without the feed at its end.
std::vector<Picture> printedPages(const wren::escpos::Paper& paper,
                                  const std::vector<reference::Page>& pages);

}  // namespace job_files
