// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-compare --filter FILE --floor FILE --ppd FILE --data FOLDER
//                    [--filter-twin FILE --floor-twin FILE] [--pairs N] [--peer NAME PROGRAM PPD
//                    BITS]...
//
// Prints every workload with every halftone type through the filter and through
// the floor program in turns (A B A B) and writes one table of the CPU time of
// the filter as a multiple of the floor's, and of its memory. Peers are other
// printer filters on the same pixels, with 8 or 1 BITS each.
// Where nothing may be mounted the twins are run instead: the same programs, which
// write their images to "spool" below their working folder.
// It fails when a program fails or when filter and floor do not write
// the same number of bytes, since then they did not do the same work.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/measured_run.h"

namespace {

using bench::Command;
using bench::Usage;

struct Workload {
  const char* name;
  int pages;
  double pagePixels;
  double goalThreshold;
  double goalDiffusion;
  double goalStencil;
};

constexpr double kR2Pixels = 576.0 * 40000;
constexpr Workload kWorkloads[] = {
    {"R1", 20, 576.0 * 1200, 1.35, 2.3, 4.0},
    {"R2", 1, kR2Pixels, 1.35, 2.3, 4.0},
    {"R3", 20, 832.0 * 2000, 1.35, 2.3, 6.5},
};
constexpr std::size_t kRoll = 1;

enum class Family { kThreshold, kDiffusion, kStencil };

struct Type {
  const char* name;
  const char* method;  // what runs: the names are one step off
  Family family;
};

constexpr Type kTypes[] = {
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

// Cuts are a matter of the PPD's defaults; without them the floor program knows
// how many bytes a filter writes.
constexpr const char* kOptions = "PageCutType=0 DocCutType=0";

std::string optionsOf(const Type& type) {
  return std::string(kOptions) + " HalftoneType=" + type.name;
}

constexpr double kStartUpGoal = 1.15;
constexpr double kSmallPeakGoalMiB = 16;

double goal(const Workload& workload, Family family) {
  if (family == Family::kThreshold) return workload.goalThreshold;
  return family == Family::kDiffusion ? workload.goalDiffusion : workload.goalStencil;
}

double pagesGoal(Family family) {
  return family == Family::kStencil ? 4.2 : 2.2;
}

struct Peer {
  std::string name;
  std::string program;
  std::string ppd;
  std::string bits;  // per pixel: 8 or 1
};

struct Setup {
  std::string filter;
  std::string floor;
  std::string filterTwin;
  std::string floorTwin;
  std::string ppd;
  std::string data;
  int pairs = 25;
  std::vector<Peer> peers;
};

// Medians over the pairs of one case.
struct Result {
  double ratio = 0;
  double filterMs = 0;
  double floorMs = 0;
  double filterMiB = 0;
};

bool checkPair(const std::string& label, const Usage& filter, const Usage& floor) {
  const bool same = filter.status == floor.status && filter.outBytes == floor.outBytes &&
                    filter.fileBytes == floor.fileBytes;
  if (!same) {
    std::fprintf(stderr,
                 "%s: filter and floor differ: status %d and %d, output %lld and %lld bytes, "
                 "images %lld and %lld bytes\n",
                 label.c_str(), filter.status, floor.status, filter.outBytes, floor.outBytes,
                 filter.fileBytes, floor.fileBytes);
  }
  return same;
}

// The first pair warms the caches and is checked, not counted.
bool comparePairs(const Setup& setup, const std::string& raster, const std::string& options,
                  Result& result) {
  const std::string path = setup.data + "/" + raster + ".ras";
  const Command filter{setup.filter, setup.ppd, options, path};
  const Command floor{setup.floor, setup.ppd, options, path};
  if (!checkPair(raster + " " + options, bench::measure(filter), bench::measure(floor))) {
    return false;
  }
  std::vector<double> ratios;
  std::vector<double> filterMs;
  std::vector<double> floorMs;
  std::vector<double> peaks;
  for (int i = 0; i < setup.pairs; ++i) {
    const Usage a = bench::measure(filter);
    const Usage b = bench::measure(floor);
    ratios.push_back(a.cpuMs / b.cpuMs);
    filterMs.push_back(a.cpuMs);
    floorMs.push_back(b.cpuMs);
    peaks.push_back(a.peakMiB);
  }
  result = {bench::median(ratios), bench::median(filterMs), bench::median(floorMs),
            bench::median(peaks)};
  return true;
}

const char* mark(double value, double limit) {
  return value <= limit ? "" : " (missed)";
}

bool printStartUp(const Setup& setup, Result& empty) {
  if (!comparePairs(setup, "empty", kOptions, empty)) return false;
  std::printf(
      "Empty job: filter %.2f ms, floor %.2f ms, ratio %.2f, goal %.2f%s; peak %.1f MiB\n\n",
      empty.filterMs, empty.floorMs, empty.ratio, kStartUpGoal, mark(empty.ratio, kStartUpGoal),
      empty.filterMiB);
  return true;
}

void printHead() {
  std::printf("| `HalftoneType` | method |");
  for (const Workload& workload : kWorkloads) {
    std::printf(" %s ratio | %s ms | %s Mpx/s | %s peak |", workload.name, workload.name,
                workload.name, workload.name);
  }
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < std::size(kWorkloads); ++i) std::printf("--:|--:|--:|--:|");
  std::printf("\n");
}

void printPeak(const Result& result, const Result& empty, bool roll, Family family) {
  if (roll) {
    const double pages = (result.filterMiB - empty.filterMiB) * 1024 * 1024 / kR2Pixels;
    std::printf(" %.2f pages%s |", pages, mark(pages, pagesGoal(family)));
  } else {
    std::printf(" %.1f MiB%s |", result.filterMiB, mark(result.filterMiB, kSmallPeakGoalMiB));
  }
}

bool printRow(const Setup& setup, const Type& type, const Result& empty) {
  std::printf("| %s | %s |", type.name, type.method);
  for (const Workload& workload : kWorkloads) {
    Result result;
    if (!comparePairs(setup, workload.name, optionsOf(type), result)) {
      return false;
    }
    std::printf(" %.2f%s | %.1f | %.0f |", result.ratio,
                mark(result.ratio, goal(workload, type.family)), result.filterMs,
                workload.pages * workload.pagePixels / result.filterMs / 1e3);
    printPeak(result, empty, &workload == &kWorkloads[kRoll], type.family);
    std::fflush(stdout);
  }
  std::printf("\n");
  return true;
}

// More pages than R1 has must not need more memory.
bool printGrowth(const Setup& setup) {
  std::printf("\nPeak with 100 receipts instead of 20:");
  for (const Type& type : {kTypes[0], kTypes[4], kTypes[8]}) {
    const std::string options = optionsOf(type);
    const Usage few = bench::measure({setup.filter, setup.ppd, options, setup.data + "/R1.ras"});
    const Usage many =
        bench::measure({setup.filter, setup.ppd, options, setup.data + "/R1-long.ras"});
    if (few.status != 0 || many.status != 0) return false;
    std::printf(" %s %+.2f MiB;", type.name, many.peakMiB - few.peakMiB);
  }
  std::printf("\n");
  return true;
}

bool printPeer(const Setup& setup, const Peer& peer) {
  std::printf("| %s |", peer.name.c_str());
  for (const Workload& workload : kWorkloads) {
    const std::string path = setup.data + "/" + workload.name;
    const Command theirs{peer.program, peer.ppd, "",
                         path + (peer.bits == "1" ? ".1bit" : "") + ".ras"};
    const Command floor{setup.floor, setup.ppd, "", path + ".ras"};
    std::vector<double> ratios;
    std::vector<double> times;
    for (int i = 0; i < setup.pairs; ++i) {
      const Usage a = bench::measure(theirs);
      const Usage b = bench::measure(floor);
      if (a.status != 0 || a.outBytes == 0) {
        std::printf(" failed with status %d\n", a.status);
        return false;
      }
      ratios.push_back(a.cpuMs / b.cpuMs);
      times.push_back(a.cpuMs);
    }
    const double ms = bench::median(times);
    std::printf(" %.2f | %.1f | %.0f |", bench::median(ratios), ms,
                workload.pages * workload.pagePixels / ms / 1e3);
  }
  std::printf("\n");
  return true;
}

bool printPeers(const Setup& setup) {
  if (setup.peers.empty()) return true;
  std::printf("\n| peer |");
  for (const Workload& w : kWorkloads)
    std::printf(" %s ratio | %s ms | %s Mpx/s |", w.name, w.name, w.name);
  std::printf("\n|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n");
  for (const Peer& peer : setup.peers) {
    if (!printPeer(setup, peer)) return false;
  }
  return true;
}

bool run(const Setup& setup) {
  Result empty;
  if (!printStartUp(setup, empty)) return false;
  printHead();
  for (const Type& type : kTypes) {
    if (!printRow(setup, type, empty)) return false;
  }
  return printGrowth(setup) && printPeers(setup);
}

bool runTwins(Setup setup, const std::string& problem) {
  if (setup.filterTwin.empty() || setup.floorTwin.empty()) {
    std::fprintf(stderr, "no private spool folder: %s\n", problem.c_str());
    return false;
  }
  const bench::SpoolBelow spool;
  std::fprintf(stderr, "Nothing may be mounted here (%s): images go to %s.\n", problem.c_str(),
               spool.folder().c_str());
  setup.filter = setup.filterTwin;
  setup.floor = setup.floorTwin;
  return run(setup);
}

}  // namespace

int main(int argc, char** argv) {
  Setup setup;
  std::vector<std::string> peers;  // four words each
  CLI::App app("Compares the filter with the floor program and with other printer filters.");
  app.add_option("--filter", setup.filter)->required();
  app.add_option("--floor", setup.floor)->required();
  app.add_option("--filter-twin", setup.filterTwin);
  app.add_option("--floor-twin", setup.floorTwin);
  app.add_option("--ppd", setup.ppd)->required();
  app.add_option("--data", setup.data)->required();
  app.add_option("--pairs", setup.pairs)->check(CLI::Range(1, 1000));
  app.add_option("--peer", peers, "NAME PROGRAM PPD BITS")->type_size(4)->expected(0, 9);
  CLI11_PARSE(app, argc, argv);
  for (std::size_t i = 0; i + 3 < peers.size(); i += 4) {
    setup.peers.push_back({peers[i], peers[i + 1], peers[i + 2], peers[i + 3]});
  }
  const std::string problem = bench::enterPrivateSpool();
  if (problem.empty()) return run(setup) ? 0 : 1;
  return runTwins(setup, problem) ? 0 : 1;
}
