// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-compare: runs the filter, the floor program and, if asked for, other builds and
// filters in rounds, and prints tables of CPU time and memory. It fails when two of them did not
// write the same number of bytes, since then they did not do the same work. --help lists the
// options; docs/PERFORMANCE.md explains the columns.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "bench/filter_table.h"
#include "bench/level_table.h"
#include "bench/measured_run.h"
#include "bench/peer_table.h"
#include "bench/rounds.h"

namespace {

using wren::bench::Setup;

constexpr int kStatusUsage = 2;

// The programs that take the place of the others where nothing may be mounted.
struct Relocated {
  std::string filter;
  std::string floor;
  std::string atLevel;
};

bool printTables(const Setup& setup) {
  if (!setup.atLevel.empty()) return wren::bench::LevelTable(setup).run();
  return wren::bench::FilterTable(setup).run() && wren::bench::PeerTable(setup).run();
}

// Without a mount namespace: the same programs, built with another folder for their images.
bool runRelocated(Setup setup, const Relocated& relocated, const std::string& problem) {
  if (!setup.against.empty()) {
    std::fprintf(stderr,
                 "--against is not possible here: nothing may be mounted (%s), and %s would write "
                 "its debug images to /var/spool/cups/tmp. Run it as root or where user "
                 "namespaces are allowed.\n",
                 problem.c_str(), setup.against.c_str());
    return false;
  }
  const bool hasAll = !relocated.filter.empty() && !relocated.floor.empty() &&
                      (setup.atLevel.empty() || !relocated.atLevel.empty());
  if (!hasAll) {
    std::fprintf(stderr, "no private spool folder: %s\n", problem.c_str());
    return false;
  }
  const wren::bench::SpoolBelow spool;
  std::fprintf(stderr, "Nothing may be mounted here (%s): images go to %s.\n", problem.c_str(),
               spool.folder().c_str());
  setup.filter = relocated.filter;
  setup.floor = relocated.floor;
  if (!setup.atLevel.empty()) setup.atLevel = relocated.atLevel;
  return printTables(setup);
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
  Relocated relocated;
  std::vector<std::string> peers;  // four words each
  CLI::App app("Compares the filter with the floor program and with other builds and filters.");
  app.add_option("--filter", setup.filter, "the filter to measure")->required();
  app.add_option("--floor", setup.floor, "the floor program")->required();
  app.add_option("--at-level", setup.atLevel,
                 "the filter that takes a vector level: prints the table by level alone");
  app.add_option("--relocated-filter", relocated.filter, "the filter that writes images to spool/");
  app.add_option("--relocated-floor", relocated.floor, "the floor program that does the same");
  app.add_option("--relocated-at-level", relocated.atLevel,
                 "the filter that takes a vector level and does the same");
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
  if (problem.empty()) return printTables(setup) ? 0 : 1;
  return runRelocated(std::move(setup), relocated, problem) ? 0 : 1;
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
