// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the tables of the comparison share: the programs and files, the command line of a case,
// the check that two programs did the same work, and the form of a figure.

#pragma once

#include <string>
#include <vector>

#include "bench/measured_run.h"
#include "bench/workloads.h"

namespace wren::bench {

/// Another printer filter.
struct Peer {
  std::string name;
  std::string program;
  std::string ppd;
  std::string bits;  ///< per pixel of its raster: 8 or 1
};

/// The programs are paths; one that is not asked for is empty.
struct Setup {
  std::string filter;
  std::string floor;
  std::string atLevel;  ///< the filter at the vector level that its first argument names
  std::string against;  ///< another build of the filter
  std::string ppd;
  std::string data;  ///< folder of wren-bench-rasters
  int pairs = 25;    ///< rounds per figure
  std::vector<Peer> peers;
};

enum class Images { kOn, kOff };

/// The job options of a case. No cuts: the floor program writes none.
std::string optionsOf(Images images);
std::string optionsOf(const Halftone& halftone, Images images);

/// A run of `program` on a raster of `setup.data`.
/// @param raster the name without its extension.
Command commandOf(const Setup& setup, const std::string& program, const std::string& raster,
                  const std::string& options);

/// Whether both ended alike and wrote the same number of bytes; if not, a message says what
/// differs.
/// @param label names the case.
bool didSameWork(const std::string& label, const std::string& oneName, const Usage& one,
                 const std::string& otherName, const Usage& other);

/// Millions of pixels per second.
double megapixels(const Workload& workload, double ms);

/// " (missed)" for a value above its goal.
const char* mark(double value, double goal);

}  // namespace wren::bench
