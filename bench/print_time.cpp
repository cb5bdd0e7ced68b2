// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-print FOLDER root|user ROUNDS
//
// The time that a person waits: from the call of lp with the example receipt to the first and the
// last byte at a network printer, through a private scheduler in FOLDER, which
// tests/queue/run_queue_test.sh prepared. In each round the filter also runs alone on the raster
// of that job.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/measured_run.h"
#include "tests/queue/capture_server.h"
#include "tests/queue/scheduler.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using wren::bench::Command;
using wren::bench::median;
using wren::bench::Usage;

constexpr int kStatusUsage = 2;
constexpr int kSystemBuffer = 0;
constexpr const char* kQueue = "wren80";
constexpr const char* kDocument = "receipt.pdf";

// Milliseconds from the start of lp.
struct Delivery {
  double lpEnd = 0;
  double firstByte = 0;
  double lastByte = 0;
  std::size_t bytes = 0;
};

double msBetween(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

// The next job must not wait for the end of this one.
void waitUntilIdle() {
  constexpr int kMostChecks = 1500;
  constexpr useconds_t kPause = 20'000;
  const std::string jobs = std::string("lpstat -o ") + kQueue + " | grep -q .";
  for (int i = 0; i < kMostChecks && run(jobs) == 0; ++i) usleep(kPause);
}

Delivery deliver(const std::string& work, CaptureServer& printer) {
  const std::string document = work + "/documents/" + kDocument;
  const auto start = Clock::now();
  if (run(std::string("lp -d ") + kQueue + " -- " + document + " >/dev/null") != 0) {
    throw std::runtime_error("lp failed");
  }
  const auto end = Clock::now();
  const auto connections = printer.take(1);
  if (connections.size() != 1 || connections[0].bytes.empty()) {
    throw std::runtime_error("the job did not arrive");
  }
  waitUntilIdle();
  const auto& arrived = connections[0];
  return {msBetween(start, end), msBetween(start, arrived.firstByte),
          msBetween(start, arrived.lastByte), arrived.bytes.size()};
}

std::string textOf(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The filter of the queue is a script that keeps its input. Takes the input of the one job so
// far, and puts the filter itself in its place: later jobs are not delayed by a copy.
Command takeRecordedRun(const std::string& work) {
  const fs::path bin = work + "/bin";
  const fs::directory_iterator runs(work + "/runs");
  if (runs == fs::directory_iterator()) throw std::runtime_error("no filter ran");
  const fs::path folder = runs->path();
  fs::remove(bin / "filter/rastertowren");
  fs::copy_file(bin / "rastertowren", bin / "filter/rastertowren");
  return {bin / "rastertowren", "", folder / "ppd", textOf(folder / "options"), folder / "raster"};
}

struct Row {
  const char* what;
  std::vector<double> ms;
};

void print(const Row& row) {
  auto sorted = row.ms;
  std::sort(sorted.begin(), sorted.end());
  std::printf("| %s | %.1f | %.1f to %.1f |\n", row.what, median(sorted),
              sorted[(sorted.size() - 1) / 4], sorted[3 * (sorted.size() - 1) / 4]);
}

void measureRounds(const std::string& work, CaptureServer& printer, int rounds) {
  deliver(work, printer);
  const Command filter = takeRecordedRun(work);
  const wren::bench::SpoolBelow spool;
  Row rows[] = {{"end of lp", {}},
                {"first byte", {}},
                {"last byte", {}},
                {"the filter alone, wall time", {}},
                {"the filter alone, CPU time", {}}};
  std::vector<double> share;
  for (int i = 0; i <= rounds; ++i) {
    const Delivery job = deliver(work, printer);
    const Usage alone = measure(filter);
    if (alone.status != 0 || alone.outBytes != static_cast<long long>(job.bytes)) {
      throw std::runtime_error("the filter alone does not write what arrived");
    }
    if (i == 0) continue;  // warms the caches
    const double figures[] = {job.lpEnd, job.firstByte, job.lastByte, alone.wallMs, alone.cpuMs};
    for (std::size_t f = 0; f < std::size(figures); ++f) rows[f].ms.push_back(figures[f]);
    share.push_back(100 * alone.wallMs / job.lastByte);
  }
  std::printf("%s, %d rounds, from the call of lp:\n\n", kDocument, rounds);
  std::printf("| | ms, median | half of them |\n|---|--:|--:|\n");
  for (const Row& row : rows) print(row);
  std::printf("\nThe filter is %.1f %% of the time to the last byte.\n", median(share));
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc == 4 ? std::atoi(argv[3]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "Usage: %s FOLDER root|user ROUNDS\n", argv[0]);
    return kStatusUsage;
  }
  const std::string work = argv[1];
  Scheduler scheduler(work, std::string(argv[2]) == "root");
  try {
    CaptureServer printer(kSystemBuffer);
    if (!scheduler.start() || !scheduler.addQueues(printer.port())) {
      throw std::runtime_error("the scheduler did not start");
    }
    measureRounds(work, printer, rounds);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n%s", error.what(), scheduler.logTail().c_str());
    return 1;
  }
  return 0;
}
