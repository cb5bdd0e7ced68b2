// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What a user has asked `wren print` for.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

struct PrintArguments {
  std::string document;
  int copies = 1;
  int paper = 80;
  std::vector<std::string> options;  ///< as given to -o
  std::string folder;                ///< for the results that have no path of their own
  std::string out;     ///< printer bytes; empty: named after the document; - is standard output
  std::string raster;  ///< the pages that the filter gets; empty: not kept
  std::string images;  ///< folder for debug images; empty: named after the document
  bool json = false;
};

}  // namespace wren::cli
