// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the readers of PNG and JPEG share.

#pragma once

#include <cstddef>
#include <cstdint>

#include "app/document_request.h"
#include "app/picture_document.h"
#include "common/handles.h"

namespace wren::app {

/// Opens the file. Throws DocumentError if that fails, or if it is empty or too large.
FilePtr openPicture(const DocumentRequest& request, const PictureSettings& settings);

/// Throws DocumentError (kUnprintable) if a picture of this size has too many pixels.
void checkPictureSize(std::uint64_t widthPx, std::uint64_t heightPx,
                      const PictureSettings& settings);

/// Orientation by EXIF data that begin with their TIFF header, 1 to 8; 1 if they tell nothing.
int exifOrientation(const std::uint8_t* tiff, std::size_t size);

/// Ink of a colour by the luma of BT.601, 0 to 255.
constexpr std::uint8_t inkOf(unsigned red, unsigned green, unsigned blue) {
  return static_cast<std::uint8_t>(255 - (299 * red + 587 * green + 114 * blue + 500) / 1000);
}

/// Ink of a partly transparent colour on white paper.
constexpr std::uint8_t onPaper(unsigned ink, unsigned alpha) {
  return static_cast<std::uint8_t>((ink * alpha + 127) / 255);
}

}  // namespace wren::app
