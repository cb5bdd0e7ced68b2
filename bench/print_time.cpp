// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-print FOLDER root|user ROUNDS [APPLICATION]
//
// The time that a person waits: from the call of lp with the example receipt to the first and the
// last byte at a network printer, through a private scheduler in FOLDER, which
// tests/queue/run_queue_test.sh prepared. In each round the filter also runs alone on the raster
// of that job. With the program of the printer application, the same receipt goes to one as well,
// as a PDF and as PWG raster.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/measured_run.h"
#include "bench/printer_application.h"
#include "tests/queue/capture_server.h"
#include "tests/queue/scheduler.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using wren::bench::Command;
using wren::bench::median;
using wren::bench::PrinterApplication;
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

/// Milliseconds from the request to the first byte, at a printer of its own.
class ApplicationRun {
 public:
  ApplicationRun(const std::string& program, const std::string& work)
      : printer_(kSystemBuffer), pdf_(textOf(work + "/documents/" + kDocument)) {
    {
      const PrinterApplication keeping(program, work + "/app-pages", printer_.port(), true);
      keeping.print(pdf_, kPdf);
      printer_.take(1);
      pwg_ = keeping.keptPageAsPwg();
    }
    application_ =
        std::make_unique<PrinterApplication>(program, work + "/app", printer_.port(), false);
  }

  double pdf() { return deliver(pdf_, kPdf); }
  double pwg() { return deliver(pwg_, kPwg); }

 private:
  static constexpr const char* kPdf = "application/pdf";
  static constexpr const char* kPwg = "image/pwg-raster";

  double deliver(const std::string& document, const char* format) {
    const auto start = Clock::now();
    application_->print(document, format);
    const auto connections = printer_.take(1);
    if (connections.size() != 1 || connections[0].bytes.empty()) {
      throw std::runtime_error("the job of the printer application did not arrive");
    }
    return msBetween(start, connections[0].firstByte);
  }

  CaptureServer printer_;
  std::string pdf_;
  std::string pwg_;
  std::unique_ptr<PrinterApplication> application_;
};

void printGoal(const Row& row, double goal) {
  std::printf("%s: median %.1f ms, goal %.0f ms%s\n", row.what, median(row.ms), goal,
              median(row.ms) > goal ? " (missed)" : "");
}

void measureRounds(const std::string& work, CaptureServer& printer, int rounds,
                   const std::string& application) {
  constexpr double kPdfGoalMs = 50;
  constexpr double kPwgGoalMs = 10;
  std::optional<ApplicationRun> other;
  if (!application.empty()) other.emplace(application, work);
  Row otherRows[] = {{"first byte, printer application, PDF", {}},
                     {"first byte, printer application, PWG raster", {}}};
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
    const double ofOther[] = {other ? other->pdf() : 0, other ? other->pwg() : 0};
    if (i == 0) continue;  // warms the caches
    for (std::size_t f = 0; f < std::size(ofOther); ++f) otherRows[f].ms.push_back(ofOther[f]);
    const double figures[] = {job.lpEnd, job.firstByte, job.lastByte, alone.wallMs, alone.cpuMs};
    for (std::size_t f = 0; f < std::size(figures); ++f) rows[f].ms.push_back(figures[f]);
    share.push_back(100 * alone.wallMs / job.lastByte);
  }
  std::printf("%s, %d rounds, from the call of lp, and from the request:\n\n", kDocument, rounds);
  std::printf("| | ms, median | half of them |\n|---|--:|--:|\n");
  for (const Row& row : rows) print(row);
  if (other) {
    for (const Row& row : otherRows) print(row);
  }
  std::printf("\nThe filter is %.1f %% of the time to the last byte.\n", median(share));
  if (!other) return;
  printGoal(otherRows[0], kPdfGoalMs);
  printGoal(otherRows[1], kPwgGoalMs);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc == 4 || argc == 5 ? std::atoi(argv[3]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "Usage: %s FOLDER root|user ROUNDS [APPLICATION]\n", argv[0]);
    return kStatusUsage;
  }
  const std::string work = argv[1];
  Scheduler scheduler(work, std::string(argv[2]) == "root");
  try {
    CaptureServer printer(kSystemBuffer);
    if (!scheduler.start() || !scheduler.addQueues(printer.port())) {
      throw std::runtime_error("the scheduler did not start");
    }
    measureRounds(work, printer, rounds, argc == 5 ? argv[4] : "");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n%s", error.what(), scheduler.logTail().c_str());
    return 1;
  }
  return 0;
}
