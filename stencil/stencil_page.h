// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The whole stencil halftone on a page in memory, as a job runs it. It reads the page
// once for the threshold and once for the dots, makes no copy of it, and needs about
// 60 bytes of memory per column.

#pragma once

#include <cstddef>
#include <cstdint>

#include "common/cancel_check.h"
#include "stencil/stencil_dots.h"

namespace wren::stencil {

/// Halftones a grey page of `width` x `height` pixels, one byte each, rows
/// `sourceStride` bytes apart from the top. Each pixel of `result` becomes 0 or
/// 255; bytes of a row beyond `width` are neither read nor written. The result is that
/// of `qvTattooDithering`.
///
/// `result` may be a whole page: the page itself with the same stride, or one that does not
/// overlap it. Or it is a ring of rows that does not overlap the page. A page without pixels is
/// done at once. Throws std::bad_alloc before the result is touched.
///
/// Precondition: width and height are at most 2^31 - 128, so that positions beyond the
/// page fit in an int, and width * height is at most 2^31 - 1.
/// @param cancel asked at least once in 256 rows.
/// @return false when the job was cancelled; `result` is not complete then.
bool stencilPage(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                 const StencilDots& result, CancelCheck cancel = {});

}  // namespace wren::stencil
