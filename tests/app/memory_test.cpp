// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The memory of the application: over many jobs, and for the longest roll. The printer is
// /dev/null, since a software printer would keep its paper in the same process.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/app/running_app.h"
#include "tests/app/scripted_printer.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

constexpr const char* kPwg = "image/pwg-raster";

// A line "NAME: 1234 kB" of the process's status; -1 without one.
long kilobytes(pid_t process, const std::string& name) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name + ":")) return std::atol(line.c_str() + name.size() + 1);
  }
  return -1;
}

// What is not backed by a file: heaps, stacks and the data of libraries.
long memoryOf(const RunningApp& app) {
  return kilobytes(app.id(), "RssAnon");
}

// Raster: the answer comes when the job has ended.
void printSmallJobs(RunningApp& app, int count) {
  const std::string document = rasterStream(RasterKind::kPwg, {noisePage(576, 80, 1)});
  for (int i = 0; i < count; ++i) {
    const JobOutcome job = app.submit(document, kPwg);
    ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
    app.forgetPages();
  }
}

bool keepsFreedMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return true;
#else
  return false;
#endif
}

constexpr const char* kKeepsFreedMemory = "the sanitizer keeps memory that was freed";

// A leak of a page would be 45 kB for each job. What the jobs before them leave: caches, and as
// many ended jobs as are kept.
TEST(AppMemory, StaysFlatOverAThousandJobs) {
  if (keepsFreedMemory()) GTEST_SKIP() << kKeepsFreedMemory;
  constexpr int kBefore = 300;
  constexpr int kJobs = 1000;
  constexpr long kMostKilobytes = 1024;
  RunningApp app({.device = "file:///dev/null", .timeoutSeconds = 500});
  printSmallJobs(app, kBefore);
  const long before = memoryOf(app);
  printSmallJobs(app, kJobs);
  const long grown = memoryOf(app) - before;
  EXPECT_GT(before, 0);
  EXPECT_LE(grown, kMostKilobytes) << "from " << before << " kB";
  RecordProperty("grownKilobytes", std::to_string(grown));
  RecordProperty("kilobytes", std::to_string(before));
  // The newest of the ended jobs are kept.
  EXPECT_EQ(app.stateOf(kBefore + kJobs - 99).state, IPP_JSTATE_COMPLETED);
  EXPECT_TRUE(wren::app::eventually([&] { return app.stateOf(kJobs).id == 0; }));
}

class LongRoll : public testing::TestWithParam<unsigned> {};

TEST_P(LongRoll, OfThreeMetresNeedsLessThan64MiB) {
  if (keepsFreedMemory()) GTEST_SKIP() << kKeepsFreedMemory;
  constexpr unsigned kThreeMetresPx = 23976;
  constexpr long kMostKilobytes = 64L * 1024;
  // The method that needs the most.
  RunningApp app({.device = "file:///dev/null"});
  const JobOutcome job =
      app.print(rasterStream(RasterKind::kPwg, {flatPage(GetParam(), kThreeMetresPx, 128)}), kPwg,
                {JobAttribute::keyword("halftone-type", "stencil")});
  ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
  EXPECT_GT(app.peakKilobytes(), 0);
  EXPECT_LT(app.peakKilobytes(), kMostKilobytes);
  RecordProperty("peakKilobytes", std::to_string(app.peakKilobytes()));
}

INSTANTIATE_TEST_SUITE_P(Widths, LongRoll, testing::Values(576U, 639U));

}  // namespace
}  // namespace wren_test
