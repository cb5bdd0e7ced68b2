// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Converts pages to images of the reference implementation and back to bytes.

#pragma once

#include <cstddef>

#include "stencil/qv_image.h"
#include "tests/reference/stencil.h"
#include "tests/stencil/grey_page.h"

namespace wren::stencil {

inline reference::QVImage toReference(const QVImage& image) {
  return {image.width, image.height, static_cast<reference::QV_IMG_COLOR>(image.colorType),
          image.data};
}

inline Bytes bytesOf(const reference::QVImage& image) {
  return {image.data, image.data + std::ptrdiff_t{image.width} * image.height * image.channels};
}

/// The page after the whole stencil halftone.
inline Bytes referenceDots(const QVImage& page) {
  reference::QVImage source = toReference(page);
  return bytesOf(reference::qvTattooDithering(source));
}

}  // namespace wren::stencil
