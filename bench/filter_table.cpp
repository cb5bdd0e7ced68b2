// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/filter_table.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace wren::bench {
namespace {

// The value below which `fraction` of the values lie.
double quantile(std::vector<double> values, double fraction) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

}  // namespace

// Programs whose ratio is taken run one right after the other.
FilterTable::Round FilterTable::measureRound(const std::string& raster,
                                             const Halftone* halftone) const {
  const auto usage = [&](const std::string& program, Images images) {
    const std::string options =
        halftone == nullptr ? optionsOf(images) : optionsOf(*halftone, images);
    return measure(commandOf(setup_, program, raster, options));
  };
  Round round;
  if (hasOther()) round.other = usage(setup_.against, Images::kOn);
  round.filter = usage(setup_.filter, Images::kOn);
  round.floor = usage(setup_.floor, Images::kOn);
  round.filterOff = usage(setup_.filter, Images::kOff);
  round.floorOff = usage(setup_.floor, Images::kOff);
  return round;
}

bool FilterTable::isSameWork(const std::string& label, const Round& round) const {
  return didSameWork(label, "filter", round.filter, "floor", round.floor) &&
         didSameWork(label + " without images", "filter", round.filterOff, "floor",
                     round.floorOff) &&
         (!hasOther() || didSameWork(label, "filter", round.filter, setup_.against, round.other));
}

// The first round warms the caches and is not counted.
bool FilterTable::measureCase(const std::string& raster, const Halftone* halftone, Result& result) {
  const std::string label = raster + (halftone == nullptr ? "" : std::string(" ") + halftone->name);
  if (!isSameWork(label, measureRound(raster, halftone))) return false;
  std::vector<double> toFloor, toOther, filterMs, floorMs, peaks, offToFloor, offMs;
  for (int i = 0; i < setup_.pairs; ++i) {
    const Round round = measureRound(raster, halftone);
    if (!isSameWork(label, round)) return false;
    toFloor.push_back(round.filter.cpuMs / round.floor.cpuMs);
    if (hasOther()) toOther.push_back(round.filter.cpuMs / round.other.cpuMs);
    filterMs.push_back(round.filter.cpuMs);
    floorMs.push_back(round.floor.cpuMs);
    peaks.push_back(round.filter.peakMiB);
    offToFloor.push_back(round.filterOff.cpuMs / round.floorOff.cpuMs);
    offMs.push_back(round.filterOff.cpuMs);
  }
  if (halftone != nullptr) allToOther_.insert(allToOther_.end(), toOther.begin(), toOther.end());
  result = {median(toFloor),  hasOther() ? median(toOther) : 0,
            median(filterMs), median(floorMs),
            median(peaks),    median(offToFloor),
            median(offMs)};
  return true;
}

bool FilterTable::printStartUp() {
  if (!measureCase("empty", nullptr, empty_)) return false;
  std::printf("Empty job: filter %.2f ms, floor %.2f ms, ratio %.2f, goal %.2f%s; peak %.1f MiB",
              empty_.filterMs, empty_.floorMs, empty_.toFloor, kGoalStartUp,
              mark(empty_.toFloor, kGoalStartUp), empty_.filterMiB);
  if (hasOther()) std::printf("; ours/other %.2f", empty_.toOther);
  std::printf("\n");
  return true;
}

void FilterTable::printHead(std::vector<std::string> columns) const {
  std::printf("| `HalftoneType` | method |");
  for (const Workload& workload : kWorkloads) {
    for (const std::string& column : columns) {
      std::printf(" %s %s |", workload.name, column.c_str());
    }
  }
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < std::size(kWorkloads) * columns.size(); ++i) std::printf("--:|");
  std::printf("\n");
}

void FilterTable::printPeak(const Result& result, bool isRoll) const {
  if (isRoll) {
    const double pages = (result.filterMiB - empty_.filterMiB) * 1024 * 1024 / kRollPixels;
    std::printf(" %.2f pages%s |", pages, mark(pages, kGoalRollPages));
  } else {
    std::printf(" %.1f MiB%s |", result.filterMiB, mark(result.filterMiB, kGoalPeakMiB));
  }
}

bool FilterTable::printRow(const Halftone& halftone) {
  std::printf("| %s | %s |", halftone.name, halftone.method);
  auto& results = rows_.emplace_back();
  for (const Workload& workload : kWorkloads) {
    Result& result = results.emplace_back();
    if (!measureCase(workload.name, &halftone, result)) return false;
    std::printf(" %.2f%s | %.1f | %.0f |", result.toFloor,
                mark(result.toFloor, goalOf(workload, halftone.family)), result.filterMs,
                megapixels(workload, result.filterMs));
    printPeak(result, &workload == &kWorkloads[kRoll]);
    if (hasOther()) std::printf(" %.2f |", result.toOther);
    std::fflush(stdout);
  }
  std::printf("\n");
  return true;
}

void FilterTable::printOffTable() const {
  std::printf("\nDebug images off, as shipped:\n\n");
  printHead({"ratio", "ms", "Mpx/s"});
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    std::printf("| %s | %s |", kHalftones[i].name, kHalftones[i].method);
    for (std::size_t j = 0; j < std::size(kWorkloads); ++j) {
      const Result& result = rows_[i][j];
      std::printf(" %.2f | %.1f | %.0f |", result.offToFloor, result.offMs,
                  megapixels(kWorkloads[j], result.offMs));
    }
    std::printf("\n");
  }
}

void FilterTable::printOther() const {
  if (allToOther_.empty()) return;
  std::printf("\nours/other, all %zu pairs of the table: median %.3f, half of them %.3f to %.3f\n",
              allToOther_.size(), median(allToOther_), quantile(allToOther_, 0.25),
              quantile(allToOther_, 0.75));
}

// More pages than R1 has must not need more memory.
bool FilterTable::printGrowth() const {
  std::printf("\nPeak with 100 receipts instead of 20:");
  for (const Halftone& halftone : {kHalftones[0], kHalftones[4], kHalftones[8]}) {
    const std::string options = optionsOf(halftone, Images::kOn);
    const Usage few = measure(commandOf(setup_, setup_.filter, "R1", options));
    const Usage many = measure(commandOf(setup_, setup_.filter, "R1-long", options));
    if (few.status != 0 || many.status != 0) return false;
    std::printf(" %s %+.2f MiB;", halftone.name, many.peakMiB - few.peakMiB);
  }
  std::printf("\n");
  return true;
}

bool FilterTable::run() {
  if (!printStartUp()) return false;
  std::printf("\nDebug images on:\n\n");
  std::vector<std::string> columns = {"ratio", "ms", "Mpx/s", "peak"};
  if (hasOther()) columns.emplace_back("ours/other");
  printHead(columns);
  for (const Halftone& halftone : kHalftones) {
    if (!printRow(halftone)) return false;
  }
  printOther();
  printOffTable();
  return printGrowth();
}

}  // namespace wren::bench
