// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The short way from a page to its dots: tone, orientation, halftone method and
// negative in one go, row by row, from the page as received into the page of dots.
// The long way, through a bitmap, gives the same dots and stays for what this one
// does not do.
#pragma once

#include <cstddef>

#include "printer/wren_printer.h"

/// A page as received: height rows of width pixels, strideBytes apart; not owned.
struct GreyPage {
  const unsigned char* pixels = nullptr;
  std::size_t strideBytes = 0;
  unsigned width = 0;
  unsigned height = 0;
};

/// Makes the dots of a page with the printer's options.
/// @param method number of the classic method.
/// @param out height rows, strideBytes apart, of which width bytes each are written.
/// @return false, with nothing written, when the page has to go through the bitmap:
///   when that would not be possible either, for then the bitmap decides what happens.
bool makeDotsDirectly(const WrenPrinter& printer, long method, const GreyPage& page,
                      unsigned char* out);

/// The same with the stencil method. Also false for rows that are longer than they are
/// wide: the long way reads its result in an order of its own then. Stops early once
/// the job is cancelled; it still returns true.
bool makeStencilDotsDirectly(const WrenPrinter& printer, const GreyPage& page, unsigned char* out);
