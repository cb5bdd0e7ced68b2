// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// CUPS raster streams that are made of fields: each byte of an input chooses a form of the stream,
// a header value, a row or a run of its compression, so that most of what a fuzzer tries is a page.

#pragma once

#include <cstdint>
#include <vector>

#include "fuzz/input.h"

namespace fuzz {

/// At most four pages in one of the versions 1 to 3 of CUPS raster, in PWG raster (PWG 5102.4) or
/// Apple raster. Most pages have at most 8 KiB.
std::vector<std::uint8_t> rasterFromFields(Input& input);

}  // namespace fuzz
