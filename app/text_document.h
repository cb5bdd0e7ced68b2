// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Plain text in UTF-8, monospaced, on whole dots.

#pragma once

#include <cstdint>

#include "app/document_request.h"
#include "app/page_sink.h"

namespace wren::app {

struct TextSettings {
  std::uintmax_t maxFileBytes = std::uintmax_t{1} << 20;
};

/// Delivers the pages: as wide as the head, as long as their lines, split where they would be
/// longer than a page can be. Lines wider than the head go on in the next line.
/// @return false if the document was cancelled or the sink stopped it.
/// Throws DocumentError for an empty or a large file, and for UTF-16.
bool readText(const DocumentRequest& request, const TextSettings& settings, PageSink& sink);

}  // namespace wren::app
