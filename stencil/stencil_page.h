// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The whole stencil halftone on rows of bytes, for a caller that has its page in
// memory already: it reads the page once for the threshold and once for the dots,
// copies nothing, and holds some 120 bytes for each column of the page.

#pragma once

#include <cstddef>
#include <cstdint>

/// Asked between blocks of rows; false ends the work.
using StencilGoesOn = bool (*)(void* context);

/// Halftones a grey page of `width` x `height` pixels, one byte each, the top row
/// first and rows `sourceStride` bytes apart. Each pixel of `result` becomes 0 or
/// 255; bytes of a row beyond `width` are not touched. The result is that of
/// qvTattooDithering.
///
/// `result` may be the page itself with the same stride; otherwise the two may not
/// overlap. `goesOn` (may be null) is called with `context` at least once in 256
/// rows. Returns false when it did, with the lower rows of the result unwritten;
/// true otherwise, also for a page without pixels.
///
/// Precondition: width and height are at most 2^31 - 128, so that positions beyond the
/// page can still be counted, and width * height is at most 2^31 - 1.
bool stencil_page(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                  std::uint8_t* result, std::ptrdiff_t resultStride, StencilGoesOn goesOn = nullptr,
                  void* context = nullptr);
