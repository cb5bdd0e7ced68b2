// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Turns a document that is not a raster into pages, whatever its format.

#pragma once

#include <string>
#include <vector>

#include "app/document_request.h"
#include "app/page_sink.h"

namespace wren::app {

/// The MIME types that `readDocument` knows.
const std::vector<std::string>& documentFormats();

/// Delivers the pages of the document to the sink, from the calling thread.
/// @param format one of `documentFormats()`.
/// @return false if the document was cancelled or the sink stopped it.
/// Throws DocumentError, and std::bad_alloc.
bool readDocument(const std::string& format, const DocumentRequest& request, PageSink& sink);

}  // namespace wren::app
