// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Cancels a job in the middle of a page of 576 x 40,000, with every halftone method: the filter
// completes the current band at most, and soon.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "tests/filter/cancelled_job.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kWidth = 576;
constexpr unsigned kHeight = 40000;
constexpr std::size_t kBandBytes = 5 + kWidth + 3;

// A generous limit, because this tests that the filter stops, not how fast: on an idle machine
// each wait is a fraction of it.
#ifdef __SANITIZE_ADDRESS__
constexpr double kSeconds = 20;
#else
constexpr double kSeconds = 5;
#endif

const std::string& raster() {
  static const std::string bytes = rasterStream(RasterKind::kV3, {noisePage(kWidth, kHeight, 1)});
  return bytes;
}

class CancelLargePage : public testing::TestWithParam<const char*> {
 protected:
  static FilterJob job() {
    FilterJob job = waitingJob();
    job.options += std::string(" HalftoneType=") + GetParam();
    return job;
  }

  // What the job prints when nobody cancels it.
  static std::string wholeOutput() {
    FilterJob whole = job();
    whole.raster = raster();
    return runFilterJob(whole).out;
  }

  // Cancels a filter, stopped or running, and checks that it ends. A running one gets no SIGCONT:
  // it would disturb the leak check, which stops the process at its end.
  void cancel(RunningFilter& filter, bool isStopped) {
    const auto start = std::chrono::steady_clock::now();
    filter.process().signal(SIGTERM);
    if (isStopped) filter.process().signal(SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return filter.process().hasEnded(); }, kSeconds));
    const std::chrono::duration<double> wait = std::chrono::steady_clock::now() - start;
    longestWait = std::max(longestWait, wait.count());
  }

  void TearDown() override {
    if (longestWait == 0) return;
    std::printf("%s: %.0f ms after the signal at most\n", GetParam(), 1000 * longestWait);
  }

  double longestWait = 0;
};

void expectNothingOfThePage(const std::string& out) {
  EXPECT_EQ(hexOf(out), hexOf(loudStart() + loudCancelledEnd()));
}

// Either complete bands of the page, or the whole page with its page end.
void expectBandsOfThePage(const std::string& out, const std::string& whole) {
  const std::string start = loudStart();
  const std::string end = loudCancelledEnd();
  ASSERT_GE(out.size(), start.size() + end.size());
  const std::string sent = out.substr(0, out.size() - end.size());
  EXPECT_EQ(hexOf(out.substr(sent.size())), hexOf(end));
  ASSERT_TRUE(whole.compare(0, sent.size(), sent) == 0);
  const std::size_t bands = sent.size() - std::min(sent.size(), start.size() + 2);
  if (bands / kBandBytes < kHeight / 8) {
    EXPECT_EQ(bands % kBandBytes, 0U);
  }
}

TEST_P(CancelLargePage, WhileItIsRead) {
  RunningFilter filter(job());
  filter.process().feed(raster().substr(0, raster().size() / 2));
  ASSERT_TRUE(filter.process().waitForError("Try print page"));
  cancel(filter, false);
  const auto result = filter.finish();
  expectQuietEnd(result);
  expectNothingOfThePage(result.out);
  EXPECT_TRUE(result.images.empty());
}

bool hasImage(const RunningFilter& filter) {
  return !fs::is_empty(filter.folder().path() / "spool");
}

// The first image is opened after the page has been read and before its dots are made. The
// filter is stopped before it gets the signal, so that its state is known: if it has not logged
// the line "printImage" yet, no band may follow.
TEST_P(CancelLargePage, WhileItsDotsAreMadeOrSent) {
  const std::string whole = wholeOutput();
  for (const useconds_t delay : {0U, 5000U, 10000U, 20000U, 40000U, 80000U}) {
    SCOPED_TRACE(delay);
    RunningFilter filter(job());
    filter.process().feed(raster());
    ASSERT_TRUE(waitUntil([&] { return hasImage(filter); }, 20));
    usleep(delay);
    filter.process().signal(SIGSTOP);
    int status = 0;
    ASSERT_EQ(waitpid(filter.process().id(), &status, WUNTRACED), filter.process().id());
    ASSERT_TRUE(WIFSTOPPED(status));
    const bool hasBands = filter.process().errSoFar().find("printImage") != std::string::npos;
    cancel(filter, true);
    const auto result = filter.finish();
    expectQuietEnd(result);
    if (hasBands) {
      expectBandsOfThePage(result.out, whole);
    } else {
      expectNothingOfThePage(result.out);
    }
  }
}

// The filter is blocked in a write, because nobody reads the bands.
TEST_P(CancelLargePage, WhileItsBandsAreSent) {
  SlowReader reader;
  FilterJob waiting = job();
  waiting.beforeExec = [&] { dup2(reader.writeEnd(), STDOUT_FILENO); };
  RunningFilter filter(waiting);
  reader.started();
  filter.process().feed(raster());
  std::string out = reader.take(1000);
  usleep(100000);  // the pipe fills up
  filter.process().signal(SIGTERM);
  out += reader.rest();
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_LT(out.size(), loudStart().size() + kHeight / 8 * kBandBytes);
  expectBandsOfThePage(out, wholeOutput());
}

INSTANTIATE_TEST_SUITE_P(Methods, CancelLargePage,
                         testing::Values("None", "FloydSteinberg", "Ordered", "Burkes", "Stucki",
                                         "JarvisJudiceNinke", "Sierra", "StevensonArce",
                                         "QVDithering"));

}  // namespace
}  // namespace wren_test
