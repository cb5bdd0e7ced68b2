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

void printSmallJobs(RunningApp& app, int count) {
  const std::string document = rasterStream(RasterKind::kPwg, {noisePage(576, 80, 1)});
  for (int i = 0; i < count; ++i) {
    const JobOutcome job = app.print(document, kPwg);
    ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
    app.forgetPages();
  }
}

// @param warmUp jobs after which the caches and the history have grown.
void expectFlat(int warmUp, int jobs, long mostKilobytes) {
  RunningApp app({.device = "file:///dev/null"});
  printSmallJobs(app, warmUp);
  const long before = memoryOf(app);
  printSmallJobs(app, jobs);
  const long grown = memoryOf(app) - before;
  EXPECT_GT(before, 0);
  EXPECT_LE(grown, mostKilobytes) << "from " << before << " kB";
  testing::Test::RecordProperty("grownKilobytes", std::to_string(grown));
}

// A leak of a page is 45 kB for each job; the longer run would see 2 kB.
TEST(AppMemory, StaysFlatOverSixtyJobs) {
  expectFlat(20, 60, 1024);
}

TEST(AppMemory, DISABLED_StaysFlatOverAThousandJobs) {
  expectFlat(200, 1000, 2048);
}

class LongRoll : public testing::TestWithParam<unsigned> {};

TEST_P(LongRoll, OfThreeMetresNeedsLessThan64MiB) {
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
