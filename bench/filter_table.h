// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The main tables of the comparison: the filter against the floor program, with debug images and
// without, and against another build of the filter.

#pragma once

#include <string>
#include <vector>

#include "bench/rounds.h"

namespace wren::bench {

class FilterTable {
 public:
  /// @param setup has to exist as long as the table.
  explicit FilterTable(const Setup& setup) : setup_(setup) {}

  /// Measures and prints everything; false, after a message, when a program failed or two did
  /// not do the same work.
  bool run();

 private:
  // What ran in one round. `other` is measured where it is asked for.
  struct Round {
    Usage filter;
    Usage floor;
    Usage other;
    Usage filterOff;  // without debug images
    Usage floorOff;
  };

  // Medians over the rounds of one case; a time without a unit is a ratio.
  struct Result {
    double toFloor = 0;
    double toOther = 0;  // ours to the other build
    double filterMs = 0;
    double floorMs = 0;
    double filterMiB = 0;
    double offToFloor = 0;
    double offMs = 0;
  };

  bool hasOther() const { return !setup_.against.empty(); }
  // Null for a raster without pages.
  Round measureRound(const std::string& raster, const Halftone* halftone) const;
  bool isSameWork(const std::string& label, const Round& round) const;
  bool measureCase(const std::string& raster, const Halftone* halftone, Result& result);

  bool printStartUp();
  void printHead(std::vector<std::string> columns) const;
  bool printRow(const Halftone& halftone);
  void printPeak(const Result& result, bool isRoll) const;
  void printOffTable() const;
  void printOther() const;
  bool printGrowth() const;

  const Setup& setup_;
  Result empty_;
  std::vector<std::vector<Result>> rows_;  // by halftone and workload
  std::vector<double> allToOther_;         // the pairs of all cases
};

}  // namespace wren::bench
