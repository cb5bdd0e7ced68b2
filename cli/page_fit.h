// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Whether the pages of a PDF fit the paper. CUPS shrinks those that do not, or cuts them off, and
// says nothing: ten metres of PDF become two hundred millimetres of paper.

#pragma once

#include <string>
#include <vector>

#include "cli/job_options.h"

namespace wren::cli {

struct PageSizePt {
  double width = 0;
  double length = 0;
};

/// The sizes of the pages in the output of `pdfinfo -f 1 -l N`, turned as they are shown.
std::vector<PageSizePt> parsePageSizes(const std::string& pdfinfo);

/// One line about the pages that are larger than the paper, and what helps; empty if there are
/// none.
std::string describeLargePages(const std::vector<PageSizePt>& pages, const PageSizePt& paper,
                               const filter::CustomSizeLimits& limits);

/// The same for a PDF and the raster that CUPS made of it. Empty if the job sets how pages are
/// scaled, or if the program pdfinfo cannot tell.
std::string describePageFit(const std::string& document, const std::string& rasterPath,
                            const JobOptions& options, const filter::CustomSizeLimits& limits);

}  // namespace wren::cli
