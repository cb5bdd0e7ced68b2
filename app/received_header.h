// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A raster document as the client sent it. PAPPL shows its callbacks another header, of 8 bits,
// where the client's has 1 bit per pixel, ends a job without asking them if the first header
// cannot be read, and takes a document that is cut off behind a page for a whole one.

#pragma once

#include <cups/raster.h>

#include <string>

namespace wren::app {

/// The header that this thread read last with the CUPS library; null if it has read none, or where
/// a program cannot replace a function of a library that it is linked with. A document without a
/// first header has one of zeros.
const cups_page_header2_s* lastReceivedHeader();

/// Why the document that this thread reads, or read last, does not go on, as a text for people;
/// empty if it does, or has ended behind a whole page.
const std::string& receivedFault();

}  // namespace wren::app
