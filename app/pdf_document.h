// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// PDF documents. A child process (pdftoppm) draws them in a sandbox, page after page; its output
// is passed on row by row.

#pragma once

#include <cstdint>
#include <string>

#include "app/child_sandbox.h"
#include "app/document_request.h"
#include "app/page_sink.h"

namespace wren::app {

struct PdfSettings {
  std::string program;  ///< path of pdftoppm; empty: findProgram()
  ChildLimits limits;
  std::uintmax_t maxFileBytes = std::uintmax_t{256} << 20;
  unsigned maxPages = 1000;
};

/// Delivers the pages. A page up to the paper's width has its size at `kDotsPerInch`; a few dots
/// more, from sizes in whole points, are cut off. A wider page is drawn in the width of the head,
/// or at its size if wide pages are cut. Pages have the size of their crop box.
/// @return false if the document was cancelled or the sink stopped it.
/// Throws DocumentError: before the first page for what is no PDF, is cut off, damaged, locked,
/// empty or has too many pages; later where a page is too long or cannot be drawn.
bool readPdf(const DocumentRequest& request, const PdfSettings& settings, PageSink& sink);

}  // namespace wren::app
