// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints a page with the product's printer object and collects all of its output.

#pragma once

#include <string>
#include <vector>

#include "tests/printer/test_pages.h"
#include "tests/reference/page.h"

namespace wren_test {

/// The output of a page.
struct PageOutput {
  reference::Bytes bytes;
  std::vector<std::string> log;        // addresses read ADDRESS
  std::vector<reference::Dump> dumps;  // by number
};

/// Prints the page. The debug images go to a folder of this call. Ends the test program if that
/// folder cannot be used.
/// @param packed whether the printer takes its pages packed, as that of a job does.
PageOutput printWithProduct(const reference::PageOptions& options, const TestPage& page,
                            bool packed = false);

}  // namespace wren_test
