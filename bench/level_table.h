// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The filter at every vector level of this machine and, if asked for, another build of the filter
// against the floor program, in the same rounds.

#pragma once

#include <string>
#include <vector>

#include "bench/rounds.h"

namespace wren::bench {

class LevelTable {
 public:
  /// @param setup has to exist as long as the table.
  explicit LevelTable(const Setup& setup);

  /// Measures and prints; false, after a message, when a program failed or two levels did not
  /// write the same bytes.
  bool run() const;

 private:
  // What is measured: one level, or the other build.
  struct Column {
    std::string name;
    std::string program;
    std::string level;  // empty: the program takes none
  };

  Usage usageOf(const Column& column, const std::string& raster, const std::string& options,
                Hash hash = Hash::kNone) const;
  bool writesSameBytes(const std::string& raster, const std::string& options) const;
  bool measureCase(const std::string& raster, const std::string& options,
                   std::vector<double>& toFloor) const;
  bool printRow(const Halftone& halftone) const;

  const Setup& setup_;
  std::vector<Column> columns_;  // the scalar level first
};

}  // namespace wren::bench
