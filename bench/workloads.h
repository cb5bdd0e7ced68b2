// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The cases of the comparison as tables: workloads (rasters), halftone methods, and the
// goals for time and memory. The rasters themselves are drawn by make_rasters.cpp.

#pragma once

#include <cstddef>
#include <cstdint>

namespace wren::bench {

/// One raster file. A goal is the time of the filter as a multiple of the floor program's, both
/// with debug images.
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
    {"R1", 20, 576.0 * 1200, 1.15, 1.5, 2.6},
    {"R2", 1, kRollPixels, 1.0, 1.2, 2.0},
    {"R3", 20, 832.0 * 2000, 1.2, 1.7, 4.2},
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

inline constexpr double kGoalStartUp = 1.05;
inline constexpr double kGoalPeakMiB = 16;      // R1 and R3
inline constexpr double kGoalRollPages = 2.15;  // R2: bytes per pixel above an empty job

constexpr double goalOf(const Workload& workload, Family family) {
  if (family == Family::kThreshold) return workload.goalThreshold;
  return family == Family::kDiffusion ? workload.goalDiffusion : workload.goalStencil;
}

/// The time of the filter as a share of another printer filter's, which has to stay below: with
/// the classic methods, and with the stencil method. 0 is no goal.
struct PeerGoal {
  const char* name;
  double classic;
  double stencil;
};

inline constexpr PeerGoal kPeerGoals[] = {
    {"rastertoepson", 0.7, 0},  // it only encodes bits
    {"rastertoescpx", 0.65, 0.65},
};

}  // namespace wren::bench
