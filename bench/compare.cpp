// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-compare: runs the filter, the floor program and, if asked for, another build of the
// filter in rounds, and prints one table of CPU time and memory. It fails when two of them did not
// write the same number of bytes, since then they did not do the same work. --help lists the
// options; docs/PERFORMANCE.md explains the columns.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "bench/measured_run.h"
#include "bench/workloads.h"

namespace {

using wren::bench::Command;
using wren::bench::Family;
using wren::bench::Halftone;
using wren::bench::kHalftones;
using wren::bench::kWorkloads;
using wren::bench::measure;
using wren::bench::median;
using wren::bench::Usage;
using wren::bench::Workload;

constexpr int kStatusUsage = 2;

// The floor program writes as many bytes as a job without cuts and with debug images.
constexpr const char* kOptions = "PageCutType=0 DocCutType=0";
constexpr const char* kImagesOn = " DebugImages=On";
constexpr const char* kImagesOff = " DebugImages=Off";

std::string optionsOf(const Halftone& halftone) {
  return std::string(kOptions) + " HalftoneType=" + halftone.name;
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
  std::string relocatedFilter;
  std::string relocatedFloor;
  std::string against;  // another build of the filter, or empty
  std::string ppd;
  std::string data;
  int pairs = 25;
  std::vector<Peer> peers;
};

/// Medians over the rounds of one case; a time without a unit is a ratio.
struct Result {
  double toFloor = 0;
  double offToFloor = 0;  // the filter without debug images to the same floor program
  double toOther = 0;     // ours to the other build
  double filterMs = 0;
  double floorMs = 0;
  double filterMiB = 0;
};

class Comparison {
 public:
  explicit Comparison(Setup setup) : setup_(std::move(setup)) {}

  /// Measures and prints everything; false, after a message, when a program failed.
  bool run();

 private:
  // What ran in one round. `off` and `other` are measured where they are asked for.
  struct Round {
    Usage filter;
    Usage floor;
    Usage off;
    Usage other;
  };

  bool hasOther() const { return !setup_.against.empty(); }
  Command command(const std::string& program, const std::string& raster,
                  const std::string& options) const;
  Round measureRound(const std::string& raster, const std::string& options, bool withOff) const;
  bool didSameWork(const std::string& label, const Round& round) const;
  bool measureCase(const std::string& raster, const std::string& options, bool withOff,
                   Result& result);

  bool printStartUp();
  void printHead() const;
  bool printRow(const Halftone& halftone);
  void printPeak(const Result& result, bool roll, Family family) const;
  void printNotes() const;
  bool printGrowth() const;
  bool printPeer(const Peer& peer) const;
  bool printPeers() const;

  const Setup setup_;
  Result empty_;
  std::vector<double> allToOther_;  // the pairs of all cases but the empty job
  bool offWroteImages_ = false;
};

Command Comparison::command(const std::string& program, const std::string& raster,
                            const std::string& options) const {
  return {program, setup_.ppd, options, setup_.data + "/" + raster + ".ras"};
}

// Pairs whose ratio is taken run one right after the other.
Comparison::Round Comparison::measureRound(const std::string& raster, const std::string& options,
                                           bool withOff) const {
  Round round;
  if (hasOther()) round.other = measure(command(setup_.against, raster, options + kImagesOn));
  round.filter = measure(command(setup_.filter, raster, options + kImagesOn));
  round.floor = measure(command(setup_.floor, raster, options + kImagesOn));
  if (withOff) round.off = measure(command(setup_.filter, raster, options + kImagesOff));
  return round;
}

bool isSameWork(const std::string& label, const char* who, const Usage& filter,
                const Usage& other) {
  const bool same = filter.status == other.status && filter.outBytes == other.outBytes &&
                    filter.fileBytes == other.fileBytes;
  if (!same) {
    std::fprintf(stderr,
                 "%s: filter and %s differ: status %d and %d, output %lld and %lld bytes, "
                 "images %lld and %lld bytes\n",
                 label.c_str(), who, filter.status, other.status, filter.outBytes, other.outBytes,
                 filter.fileBytes, other.fileBytes);
  }
  return same;
}

bool Comparison::didSameWork(const std::string& label, const Round& round) const {
  return isSameWork(label, "floor", round.filter, round.floor) &&
         (!hasOther() || isSameWork(label, setup_.against.c_str(), round.filter, round.other));
}

// The first round warms the caches and is not counted.
bool Comparison::measureCase(const std::string& raster, const std::string& options, bool withOff,
                             Result& result) {
  const std::string label = raster + " " + options;
  if (!didSameWork(label, measureRound(raster, options, withOff))) return false;
  std::vector<double> toFloor, offToFloor, toOther, filterMs, floorMs, peaks;
  for (int i = 0; i < setup_.pairs; ++i) {
    const Round round = measureRound(raster, options, withOff);
    if (!didSameWork(label, round)) return false;
    toFloor.push_back(round.filter.cpuMs / round.floor.cpuMs);
    offToFloor.push_back(round.off.cpuMs / round.floor.cpuMs);
    if (hasOther()) toOther.push_back(round.filter.cpuMs / round.other.cpuMs);
    filterMs.push_back(round.filter.cpuMs);
    floorMs.push_back(round.floor.cpuMs);
    peaks.push_back(round.filter.peakMiB);
    offWroteImages_ |= round.off.fileBytes > 0;
  }
  if (withOff) allToOther_.insert(allToOther_.end(), toOther.begin(), toOther.end());
  result = {median(toFloor),  median(offToFloor), hasOther() ? median(toOther) : 0,
            median(filterMs), median(floorMs),    median(peaks)};
  return true;
}

const char* mark(double value, double limit) {
  return value <= limit ? "" : " (missed)";
}

bool Comparison::printStartUp() {
  if (!measureCase("empty", kOptions, false, empty_)) return false;
  std::printf("Empty job: filter %.2f ms, floor %.2f ms, ratio %.2f, goal %.2f%s; peak %.1f MiB",
              empty_.filterMs, empty_.floorMs, empty_.toFloor, wren::bench::kGoalStartUp,
              mark(empty_.toFloor, wren::bench::kGoalStartUp), empty_.filterMiB);
  if (hasOther()) std::printf("; ours/other %.2f", empty_.toOther);
  std::printf("\n\n");
  return true;
}

void Comparison::printHead() const {
  std::printf("| `HalftoneType` | method |");
  for (const Workload& workload : kWorkloads) {
    for (const char* column : {"ratio", "ms", "Mpx/s", "peak", "Off"}) {
      std::printf(" %s %s |", workload.name, column);
    }
    if (hasOther()) std::printf(" %s ours/other |", workload.name);
  }
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < std::size(kWorkloads); ++i) {
    std::printf("--:|--:|--:|--:|--:|%s", hasOther() ? "--:|" : "");
  }
  std::printf("\n");
}

void Comparison::printPeak(const Result& result, bool roll, Family family) const {
  if (roll) {
    const double pages =
        (result.filterMiB - empty_.filterMiB) * 1024 * 1024 / wren::bench::kRollPixels;
    std::printf(" %.2f pages%s |", pages, mark(pages, wren::bench::goalRollPages(family)));
  } else {
    std::printf(" %.1f MiB%s |", result.filterMiB,
                mark(result.filterMiB, wren::bench::kGoalPeakMiB));
  }
}

bool Comparison::printRow(const Halftone& halftone) {
  std::printf("| %s | %s |", halftone.name, halftone.method);
  for (const Workload& workload : kWorkloads) {
    Result result;
    if (!measureCase(workload.name, optionsOf(halftone), true, result)) return false;
    std::printf(" %.2f%s | %.1f | %.0f |", result.toFloor,
                mark(result.toFloor, goalOf(workload, halftone.family)), result.filterMs,
                workload.pages * workload.pagePixels / result.filterMs / 1e3);
    printPeak(result, &workload == &kWorkloads[wren::bench::kRoll], halftone.family);
    std::printf(" %.2f |", result.offToFloor);
    if (hasOther()) std::printf(" %.2f |", result.toOther);
    std::fflush(stdout);
  }
  std::printf("\n");
  return true;
}

// The value below which `fraction` of the values lie.
double quantile(std::vector<double> values, double fraction) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

void Comparison::printNotes() const {
  if (offWroteImages_) {
    std::printf(
        "\nOff: this filter or its PPD has no DebugImages; it wrote the images all the same.\n");
  }
  if (allToOther_.empty()) return;
  std::printf("\nours/other, all %zu pairs of the table: median %.3f, half of them %.3f to %.3f\n",
              allToOther_.size(), median(allToOther_), quantile(allToOther_, 0.25),
              quantile(allToOther_, 0.75));
}

// More pages than R1 has must not need more memory.
bool Comparison::printGrowth() const {
  std::printf("\nPeak with 100 receipts instead of 20:");
  for (const Halftone& halftone : {kHalftones[0], kHalftones[4], kHalftones[8]}) {
    const std::string options = optionsOf(halftone) + kImagesOn;
    const Usage few = measure(command(setup_.filter, "R1", options));
    const Usage many = measure(command(setup_.filter, "R1-long", options));
    if (few.status != 0 || many.status != 0) return false;
    std::printf(" %s %+.2f MiB;", halftone.name, many.peakMiB - few.peakMiB);
  }
  std::printf("\n");
  return true;
}

bool Comparison::printPeer(const Peer& peer) const {
  std::printf("| %s |", peer.name.c_str());
  for (const Workload& workload : kWorkloads) {
    Command theirs =
        command(peer.program, workload.name + std::string(peer.bits == "1" ? ".1bit" : ""), "");
    theirs.ppd = peer.ppd;
    const Command floor = command(setup_.floor, workload.name, "");
    std::vector<double> ratios, times;
    for (int i = 0; i < setup_.pairs; ++i) {
      const Usage a = measure(theirs);
      const Usage b = measure(floor);
      if (a.status != 0 || a.outBytes == 0) {
        std::printf(" failed with status %d\n", a.status);
        return false;
      }
      ratios.push_back(a.cpuMs / b.cpuMs);
      times.push_back(a.cpuMs);
    }
    const double ms = median(times);
    std::printf(" %.2f | %.1f | %.0f |", median(ratios), ms,
                workload.pages * workload.pagePixels / ms / 1e3);
  }
  std::printf("\n");
  return true;
}

bool Comparison::printPeers() const {
  if (setup_.peers.empty()) return true;
  std::printf("\n| peer |");
  for (const Workload& w : kWorkloads) {
    std::printf(" %s ratio | %s ms | %s Mpx/s |", w.name, w.name, w.name);
  }
  std::printf("\n|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n");
  return std::all_of(setup_.peers.begin(), setup_.peers.end(),
                     [this](const Peer& peer) { return printPeer(peer); });
}

bool Comparison::run() {
  if (!printStartUp()) return false;
  printHead();
  for (const Halftone& halftone : kHalftones) {
    if (!printRow(halftone)) return false;
  }
  printNotes();
  return printGrowth() && printPeers();
}

// Without a mount namespace: the same programs, built with another folder for their images.
bool runRelocated(Setup setup, const std::string& problem) {
  if (!setup.against.empty()) {
    std::fprintf(stderr,
                 "--against is not possible here: nothing may be mounted (%s), and %s would write "
                 "its debug images to /var/spool/cups/tmp. Run it as root or where user "
                 "namespaces are allowed.\n",
                 problem.c_str(), setup.against.c_str());
    return false;
  }
  if (setup.relocatedFilter.empty() || setup.relocatedFloor.empty()) {
    std::fprintf(stderr, "no private spool folder: %s\n", problem.c_str());
    return false;
  }
  const wren::bench::SpoolBelow spool;
  std::fprintf(stderr, "Nothing may be mounted here (%s): images go to %s.\n", problem.c_str(),
               spool.folder().c_str());
  setup.filter = setup.relocatedFilter;
  setup.floor = setup.relocatedFloor;
  return Comparison(std::move(setup)).run();
}

// Empty for a program, else what is wrong with the path.
std::string whyNotProgram(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return "there is no file '" + path + "'";
  const bool isProgram =
      std::filesystem::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
  return isProgram ? "" : "'" + path + "' is not an executable program";
}

int compare(int argc, char** argv) {
  Setup setup;
  std::vector<std::string> peers;  // four words each
  CLI::App app("Compares the filter with the floor program and with other builds and filters.");
  app.add_option("--filter", setup.filter, "the filter to measure")->required();
  app.add_option("--floor", setup.floor, "the floor program")->required();
  app.add_option("--relocated-filter", setup.relocatedFilter,
                 "the filter that writes images to spool/");
  app.add_option("--relocated-floor", setup.relocatedFloor, "the floor program that does the same");
  app.add_option("--against", setup.against, "another build of the filter, run in the same rounds")
      ->check(whyNotProgram);
  app.add_option("--ppd", setup.ppd, "the PPD for all of them")->required();
  app.add_option("--data", setup.data, "the folder of wren-bench-rasters")->required();
  app.add_option("--pairs", setup.pairs, "runs of each program per figure")
      ->check(CLI::Range(1, 1000));
  app.add_option("--peer", peers, "NAME PROGRAM PPD BITS: another printer filter")
      ->type_size(4)
      ->expected(0, 9);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kStatusUsage;
  }
  for (std::size_t i = 0; i + 3 < peers.size(); i += 4) {
    setup.peers.push_back({peers[i], peers[i + 1], peers[i + 2], peers[i + 3]});
  }
  const std::string problem = wren::bench::enterPrivateSpool();
  if (problem.empty()) return Comparison(std::move(setup)).run() ? 0 : 1;
  return runRelocated(std::move(setup), problem) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return compare(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
