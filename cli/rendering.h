// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// From a document to raster pages: runs the filters of CUPS up to the raster, as the scheduler
// does for a queue that `wren add-queue` has made.

#pragma once

#include <string>

#include "cli/job_options.h"

namespace wren::cli {

struct RenderRequest {
  std::string document;
  std::string type;  ///< MIME type
  std::string ppd;
  int copies = 1;
  JobOptions options;
};

/// The options that keep a receipt upright and at the top of the page. CUPS centres a page that
/// is shorter than the media and rotates a wide one.
inline constexpr struct {
  const char* name;
  const char* value;
} kReceiptDefaults[] = {
    {"position", "top"},
    {"pdfAutoRotate", "no"},
    {"orientation-requested", "3"},
};

/// Adds the receipt defaults that the job does not set itself. Only the filters for pictures
/// need the orientation: `pdfAutoRotate` serves what is converted through PDF.
void addReceiptDefaults(JobOptions& options, const std::string& type);

/// Writes the pages to `rasterPath`. Throws a Failure: `kDocument` with the first error of the
/// renderer for a document that cannot be rendered, `kSetup` if a program is missing.
void renderDocument(const RenderRequest& request, const std::string& rasterPath,
                    const std::string& logPath);

/// The first error of the filters themselves in the log of cupsfilter; empty if they wrote none.
std::string firstRendererError(const std::string& log);

}  // namespace wren::cli
