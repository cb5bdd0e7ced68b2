// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pictures: PNG and JPEG. Colours become grey by the luma of ITU-R BT.601 of their stored values,
// on white paper where they are transparent; colour profiles and gamma are left out.

#pragma once

#include <cstdint>

#include "app/document_request.h"
#include "app/page_sink.h"

namespace wren::app {

struct PictureSettings {
  std::uintmax_t maxFileBytes = std::uintmax_t{128} << 20;
  std::uint64_t maxPixels = 120'000'000;
  /// For what cannot be decoded row by row: interlaced PNG and progressive JPEG.
  std::uint64_t maxMemoryBytes = std::uint64_t{256} << 20;
  int maxScans = 100;  ///< of a progressive JPEG
};

/// Both deliver one page: the whole picture in the width of the head, or, if wide pages are not
/// fitted, its pixels 1:1 and the middle of those that are too many. It is turned as its EXIF says.
/// Nothing is delivered before the file was read to its end.
/// @return false if the document was cancelled or the sink stopped it.
/// Throws DocumentError.
bool readPng(const DocumentRequest& request, const PictureSettings& settings, PageSink& sink);
bool readJpeg(const DocumentRequest& request, const PictureSettings& settings, PageSink& sink);

}  // namespace wren::app
