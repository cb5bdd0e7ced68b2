// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Dithers a whole page: grey page in, bilevel page out, one byte per pixel. The page path
// of a job and `CxImage::Dither` both call it.

#pragma once

#include <cstdint>

#include "dither/allocator.h"
#include "dither/page.h"

namespace wren::dither {

/// Dithers a page.
/// @param method number as in `kMethods` (dither/methods.h); any other number is
///   Floyd-Steinberg.
/// @param allocator source of the working memory, std::malloc if null. Error diffusion
///   needs a few rows, whatever the height; ordered dither needs none.
/// @return false, with nothing written, without memory.
bool ditherPage(std::int64_t method, const Page& page, Allocator allocator = nullptr);

}  // namespace wren::dither
