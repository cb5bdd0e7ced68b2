// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
// The way of a page through the printer object, from grey levels to dots.
#include <cstdlib>

#include "printer/wren_printer.h"

void WrenPrinter::printImage(const unsigned char* data, unsigned long bytesPerLine,
                             unsigned long height, unsigned long width) {
  doPrintImage(data, bytesPerLine, height, width);
}
