// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The options of a page as the reference implementation takes them, in the product's terms.

#pragma once

#include "printer/page_dots.h"
#include "printer/wren_printer.h"
#include "tests/reference/page.h"

namespace wren_test {

/// Sets all but the resolution, which is in the page header.
inline void applyOptions(const reference::PageOptions& options, WrenPrinter& printer) {
  printer.setBrightness(options.brightness);
  printer.setContrast(options.contrast);
  printer.setHalftoneType(static_cast<DitherType>(options.halftoneType));
  printer.setNegativePrint(options.negative);
  printer.setMirrorPrint(options.mirror);
  printer.setRotate180Print(options.rotate180);
  printer.setRemoveBlankEdges(options.removeBlankEdges);
  printer.setSkipRightPixels(options.skipRightPixels);
}

inline wren::printer::DotOptions dotOptions(const reference::PageOptions& options) {
  wren::printer::DotOptions result;
  result.brightness = options.brightness;
  result.contrast = options.contrast;
  result.rotate180 = options.rotate180;
  result.mirror = options.mirror;
  result.stencil = options.halftoneType == QVDithering;
  result.method = options.halftoneType;
  result.negative = options.negative;
  return result;
}

}  // namespace wren_test
