// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page on which a document is seen as all nine halftone methods print it. The server keeps
// nothing: a browser posts grey levels, and the answer holds the pictures.

#pragma once

#include <cstddef>

#include "app/web/request.h"

namespace wren::app::web {

/// Shows the page, and takes its form: the method and the tone become the printer's defaults.
bool answerHalftonePage(Request& request);

/// Takes an upload (docs/ARCHITECTURE.md) and answers with one line of JSON and, behind it, the
/// nine PNG files.
bool answerHalftonePreview(Request& request);

/// Takes a PDF and answers with one line of JSON and the grey levels of its pages.
bool answerPdfPages(Request& request);

/// Takes an upload and prints it with one method, if that still gives the bytes that were shown.
bool answerHalftonePrint(Request& request);

}  // namespace wren::app::web
