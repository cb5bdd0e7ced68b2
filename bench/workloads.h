// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The cases of the comparison as tables: workloads (rasters), halftone methods, and the
// goals for time and memory. The rasters themselves are drawn by make_rasters.cpp.

#pragma once

#include <cstddef>
#include <cstdint>

namespace wren::bench {

/// One raster file. A goal is the time of the filter as a multiple of the floor program's.
struct Workload {
  const char* name;
  int pages;
  double pagePixels;
  double goalThreshold;
  double goalDiffusion;
  double goalStencil;
};

inline constexpr double kRollPixels = 576.0 * 40000;
inline constexpr Workload kWorkloads[] = {
    {"R1", 20, 576.0 * 1200, 1.35, 2.3, 4.0},
    {"R2", 1, kRollPixels, 1.35, 2.3, 4.0},
    {"R3", 20, 832.0 * 2000, 1.35, 2.3, 6.5},
};
inline constexpr std::size_t kRoll = 1;  // index of the workload with one long page

enum class Family : std::uint8_t { kThreshold, kDiffusion, kStencil };

/// A choice of `HalftoneType` and the method that it runs, which is not the one that it names.
struct Halftone {
  const char* name;
  const char* method;
  Family family;
};

inline constexpr Halftone kHalftones[] = {
    {"None", "threshold", Family::kThreshold},
    {"FloydSteinberg", "ordered", Family::kThreshold},
    {"Ordered", "Burkes", Family::kDiffusion},
    {"Burkes", "Stucki", Family::kDiffusion},
    {"Stucki", "Jarvis, Judice, Ninke", Family::kDiffusion},
    {"JarvisJudiceNinke", "Sierra", Family::kDiffusion},
    {"Sierra", "Stevenson, Arce", Family::kDiffusion},
    {"StevensonArce", "Bayer", Family::kThreshold},
    {"QVDithering", "stencil", Family::kStencil},
};

inline constexpr double kGoalStartUp = 1.15;
inline constexpr double kGoalPeakMiB = 16;  // R1 and R3

constexpr double goalOf(const Workload& workload, Family family) {
  if (family == Family::kThreshold) return workload.goalThreshold;
  return family == Family::kDiffusion ? workload.goalDiffusion : workload.goalStencil;
}

/// Peak memory on the roll above that of an empty job, in bytes per pixel of the page.
constexpr double goalRollPages(Family family) {
  return family == Family::kStencil ? 4.2 : 2.2;
}

}  // namespace wren::bench
