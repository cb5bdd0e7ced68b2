// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren halftones: one document with every halftone type and several brightness values, as one
// sheet of pictures to choose from. The pictures are drawn from printer bytes.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

struct HalftonesArguments {
  std::string document;
  int paper = 80;
  std::vector<std::string> options;
  std::string folder;  ///< for a sheet that has no path of its own
  std::string out;     ///< empty: named after the document
  std::string brightness = "-20 -10 0 10 20";
  std::string crop;  ///< WIDTHxHEIGHT+X+Y in dots; empty for the whole paper
  int width = 1600;  ///< of the sheet at most, in pixels
  bool json = false;
};

/// @return the exit status. Throws a Failure.
int runHalftones(const HalftonesArguments& arguments);

}  // namespace wren::cli
