// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The options of a page as the literal version takes them, for the product's printer.
#pragma once

#include "printer/wren_printer.h"
#include "tests/reference/page.h"

namespace wren_test {

/// Sets all but the resolution, which stands in the page header.
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

}  // namespace wren_test
