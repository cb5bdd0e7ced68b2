// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The global threshold of a page, from its histogram alone: the bilevel page with
// this threshold keeps the first three moments of the grey levels (W. H. Tsai,
// "Moment-preserving thresholding", 1985).

#pragma once

#include "stencil/histogram.h"

namespace wren::stencil {

/// The first grey level at which the cumulative probability exceeds that of the dark
/// class: 0 to 255, or -1 when no level does. `kFallbackThreshold` when the moments have
/// no finite real solution; a page of one grey level is such a page.
///
/// Precondition: no entry is negative and the sum is at most 2^31 - 1.
int momentThreshold(const Histogram& histogram);

}  // namespace wren::stencil
