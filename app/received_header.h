// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The header of a page as the client sent it. PAPPL shows its callbacks another one, of 8 bits,
// where the client's has 1 bit per pixel, and then passes rows that are shorter than it says.

#pragma once

#include <cups/raster.h>

namespace wren::app {

/// The header that this thread read last with the CUPS library; null if it has read none, or where
/// a program cannot replace a function of a library that it is linked with.
const cups_page_header2_s* lastReceivedHeader();

}  // namespace wren::app
