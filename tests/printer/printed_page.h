// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints a page with the product's printer object and collects all that came out.
#pragma once

#include <string>
#include <vector>

#include "tests/reference/page.h"

namespace wren_test {

/// A page as a printer object receives it.
struct TestPage {
  unsigned long width = 0;
  unsigned long height = 0;
  unsigned long bytesPerLine = 0;
  reference::Bytes pixels;  // height x bytesPerLine
};

/// What a page left behind.
struct PageOutcome {
  reference::Bytes bytes;
  reference::Bytes secondStream;
  std::vector<std::string> log;        // addresses read ADDRESS
  std::vector<reference::Dump> dumps;  // by number
};

/// Prints the page on two streams. The debug images go to a folder of this call's own. Ends the
/// test program when that folder cannot be used.
PageOutcome printWithProduct(const reference::PageOptions& options, const TestPage& page);

}  // namespace wren_test
