// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether a page of PWG or Apple raster can be printed, and its rows as ink levels. PAPPL
// checks nothing of a header.

#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <span>
#include <string>

#include "app/page_target.h"

namespace wren::app {

/// Why a page with this header cannot be printed, as a text for people; empty if it can.
std::string rasterFault(const cups_page_header2_s& header, const PageTarget& target);

/// Turns a row of a page without a fault into ink levels, in place.
void toInk(const cups_page_header2_s& header, std::span<std::uint8_t> row);

}  // namespace wren::app
