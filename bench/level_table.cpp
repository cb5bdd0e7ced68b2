// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/level_table.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "common/vector_level.h"

namespace wren::bench {

LevelTable::LevelTable(const Setup& setup) : setup_(setup) {
  for (const VectorLevel level : machineVectorLevels()) {
    const std::string name(vectorLevelName(level));
    columns_.push_back({name, setup.atLevel, name});
  }
  if (!setup.against.empty()) columns_.push_back({"other", setup.against, ""});
}

Usage LevelTable::usageOf(const Column& column, const std::string& raster,
                          const std::string& options, Hash hash) const {
  Command command = commandOf(setup_, column.program, raster, options);
  command.firstArgument = column.level;
  return measure(command, hash);
}

// Printer bytes and debug images, compared with those of the scalar level.
bool LevelTable::writesSameBytes(const std::string& raster, const std::string& options) const {
  const std::string label = raster + " " + options;
  const Usage scalar = usageOf(columns_[0], raster, options, Hash::kTake);
  if (scalar.status != 0 || scalar.outBytes == 0) {
    std::fprintf(stderr, "%s: status %d, %lld bytes\n", label.c_str(), scalar.status,
                 scalar.outBytes);
    return false;
  }
  return std::all_of(columns_.begin() + 1, columns_.end(), [&](const Column& column) {
    const Usage usage = usageOf(column, raster, options, Hash::kTake);
    if (!didSameWork(label, columns_[0].name, scalar, column.name, usage)) return false;
    if (usage.hash == scalar.hash) return true;
    std::fprintf(stderr, "%s: %s and %s do not write the same bytes\n", label.c_str(),
                 columns_[0].name.c_str(), column.name.c_str());
    return false;
  });
}

bool LevelTable::measureCase(const std::string& raster, const std::string& options,
                             std::vector<double>& toFloor) const {
  if (!writesSameBytes(raster, options)) return false;
  std::vector<std::vector<double>> ratios(columns_.size());
  for (int i = 0; i < setup_.pairs; ++i) {
    const Usage floor = measure(commandOf(setup_, setup_.floor, raster, options));
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      const Usage usage = usageOf(columns_[c], raster, options);
      const std::string label = raster + " " + options;
      if (!didSameWork(label, columns_[c].name, usage, "floor", floor)) return false;
      ratios[c].push_back(usage.cpuMs / floor.cpuMs);
    }
  }
  toFloor.clear();
  for (const auto& ofColumn : ratios) toFloor.push_back(median(ofColumn));
  return true;
}

bool LevelTable::printRow(const Halftone& halftone) const {
  std::printf("| %s | %s |", halftone.name, halftone.method);
  for (const Workload& workload : kWorkloads) {
    std::vector<double> toFloor;
    if (!measureCase(workload.name, optionsOf(halftone, Images::kOn), toFloor)) return false;
    for (const double ratio : toFloor) std::printf(" %.2f |", ratio);
    std::fflush(stdout);
  }
  std::printf("\n");
  return true;
}

bool LevelTable::run() const {
  std::printf("Ratio to the floor program by vector level, debug images on:\n\n");
  std::printf("| `HalftoneType` | method |");
  for (const Workload& workload : kWorkloads) {
    for (const Column& column : columns_) {
      std::printf(" %s %s |", workload.name, column.name.c_str());
    }
  }
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < std::size(kWorkloads) * columns_.size(); ++i) std::printf("--:|");
  std::printf("\n");
  if (!std::all_of(std::begin(kHalftones), std::end(kHalftones),
                   [this](const Halftone& halftone) { return printRow(halftone); })) {
    return false;
  }
  std::printf("\nAll of them wrote the same bytes.\n");
  return true;
}

}  // namespace wren::bench
