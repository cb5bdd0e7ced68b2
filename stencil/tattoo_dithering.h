// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stencil halftone as a whole on images: grey, threshold, tone curve, unsharp mask
// and error diffusion. Not used by jobs, which run `stencilPage`; kept for its API and its
// tests.

#pragma once

#include "stencil/qv_image.h"

/// Halftones a page of any layout: a new `QV_IMG_GRAY` image of the same size that
/// holds only 0 and 255. `source` is only read.
QVImage qvTattooDithering(QVImage& source);
