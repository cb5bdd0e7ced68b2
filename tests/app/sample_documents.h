// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Small documents of every format, and the halftones to print them with.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/raster_stream.h"

namespace wren_test {

inline constexpr const char* kHalftones[] = {
    "threshold", "ordered",        "burkes", "stucki", "jarvis-judice-ninke",
    "sierra",    "stevenson-arce", "bayer",  "stencil"};

/// Apple raster of the CUPS library's own making, from pages of ink levels.
std::string urf(const std::vector<RasterPage>& pages);

struct SampleDocument {
  const char* format;
  std::string bytes;
  std::size_t pages;
};

/// Two pages of raster, one narrower than every head and one that is scaled; the examples.
/// @param seed of the noise on the raster pages.
std::vector<SampleDocument> sampleDocuments(unsigned seed = 1);

}  // namespace wren_test
