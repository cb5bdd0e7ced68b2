// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A cancelled job: the print system sends SIGTERM. Whatever the filter is doing, it completes the
// current band, feeds and cuts.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <memory>

#include "tests/filter/cancelled_job.h"
#include "tests/filter/expected_bytes.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

// Sends the first word of the raster; the filter then waits for a page header.
void feedUntilItWaits(RunningFilter& filter) {
  filter.process().feed(rasterSync(RasterKind::kV3));
  ASSERT_TRUE(filter.process().waitForError("outFile"));
}

TEST(Cancel, EndsAFilterThatWaitsForItsFirstPage) {
  RunningFilter filter(waitingJob());
  feedUntilItWaits(filter);
  filter.process().signal(SIGTERM);
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_EQ(hexOf(result.out), hexOf(loudStart() + loudCancelledEnd()));
}

// `finish` closes the input as well, so the test waits for the end of the filter before it.
TEST(Cancel, DoesNotNeedTheEndOfTheInput) {
  RunningFilter filter(waitingJob());
  feedUntilItWaits(filter);
  filter.process().signal(SIGTERM);
  bool ended = false;
  for (int i = 0; i < 2000 && !ended; ++i) {
    ended = filter.process().hasEnded();
    if (!ended) usleep(5000);
  }
  EXPECT_TRUE(ended);
  expectQuietEnd(filter.finish());
}

TEST(Cancel, EndsAFilterThatWaitsInTheMiddleOfAPageOrAHeader) {
  const std::string whole = rasterStream(RasterKind::kV3, {flatPage(64, 64, 255)});
  for (const std::size_t fed : {std::size_t{5}, std::size_t{1000}, whole.size() - 1}) {
    RunningFilter filter(waitingJob());
    filter.process().feed(whole.substr(0, fed));
    ASSERT_TRUE(filter.process().waitForError(fed < 1800 ? "outFile" : "Try print page"));
    filter.process().signal(SIGTERM);
    const auto result = filter.finish();
    expectQuietEnd(result);
    EXPECT_EQ(hexOf(result.out), hexOf(loudStart() + loudCancelledEnd())) << fed;
    EXPECT_TRUE(result.images.empty());
  }
}

// The filter waits for the first word of the raster before it opens the side file, so no message
// shows this moment.
TEST(Cancel, EndsAFilterThatWaitsForTheStartOfItsRaster) {
  for (const std::size_t fed : {0U, 2U}) {
    RunningFilter filter(waitingJob());
    filter.process().feed(rasterSync(RasterKind::kV3).substr(0, fed));
    ASSERT_TRUE(filter.process().waitForError("FeedCutAfterJobEnd"));
    usleep(200000);
    filter.process().signal(SIGTERM);
    for (int i = 0; i < 4000 && !filter.process().hasEnded(); ++i) usleep(5000);
    EXPECT_TRUE(filter.process().hasEnded());
    const auto result = filter.finish();
    expectQuietEnd(result);
    // On a very busy machine the signal may arrive before the first printer byte.
    EXPECT_TRUE(result.out == loudStart() + loudCancelledEnd() || result.out.empty());
  }
}

TEST(Cancel, BetweenPagesKeepsTheFinishedPage) {
  RunningFilter filter(waitingJob());
  filter.process().feed(rasterStream(RasterKind::kV3, {flatPage(8, 8, 255)}));
  ASSERT_TRUE(filter.process().waitForError("printImage"));
  usleep(200000);
  filter.process().signal(SIGTERM);
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_EQ(hexOf(result.out), hexOf(loudStart() + flatBands(8, 8) +
                                     fromHex("1B4A10 1B420101 1D5600") + loudCancelledEnd()));
}

// --- Before the first byte ---

class NamedPipe {
 public:
  NamedPipe() { EXPECT_EQ(mkfifo(path().c_str(), 0600), 0); }
  std::string path() const { return folder.path() / "pipe"; }

 private:
  TemporaryFolder folder;
};

TEST(Cancel, BeforeThePrologueLeavesNoByte) {
  const NamedPipe pipe;
  FilterJob job = waitingJob();
  job.inputPath = pipe.path();
  RunningFilter filter(job);
  usleep(300000);  // no message shows that it is blocked in open
  filter.process().signal(SIGTERM);
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
}

// Whether the program has installed its handler: before that, the signal kills it.
bool catchesTermination(pid_t program) {
  std::ifstream status("/proc/" + std::to_string(program) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("SigCgt:", 0) != 0) continue;
    return (std::stoull(line.substr(7), nullptr, 16) >> (SIGTERM - 1) & 1U) != 0;
  }
  return false;
}

void expectEndAtOnce(const FilterJob& job, useconds_t delay) {
  RunningFilter filter(job);
  ASSERT_TRUE(waitUntil([&] { return catchesTermination(filter.process().id()); }, 20));
  usleep(delay);
  filter.process().signal(SIGTERM);
  EXPECT_TRUE(waitUntil([&] { return filter.process().hasEnded(); }, 5)) << "still waits";
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.images.empty());
}

// At any moment: before, during or after the call that waits for a writer.
void expectEndAtOnceAtAnyMoment(const FilterJob& job) {
  for (useconds_t delay = 0; delay <= 20000 && !testing::Test::HasFailure(); delay += 200) {
    SCOPED_TRACE(delay);
    expectEndAtOnce(job, delay);
  }
}

TEST(Cancel, EndsAFilterWhoseInputIsAPipeWithoutAWriter) {
  const NamedPipe pipe;
  FilterJob job = waitingJob();
  job.inputPath = pipe.path();
  expectEndAtOnceAtAnyMoment(job);
}

TEST(Cancel, EndsAFilterWhosePpdIsAPipeWithoutAWriter) {
  const NamedPipe pipe;
  FilterJob job = waitingJob();
  job.ppdPath = pipe.path();
  expectEndAtOnceAtAnyMoment(job);
}

// The filter is blocked in a write in the middle of the page when the signal arrives.
TEST(Cancel, FinishesTheBandInProgressAndSendsNothingMoreOfThePage) {
  SlowReader reader;
  FilterJob job = waitingJob();
  job.via = RasterVia::kFile;
  job.raster = rasterStream(RasterKind::kV3, {flatPage(576, 8000, 255)});
  job.beforeExec = [&] { dup2(reader.writeEnd(), STDOUT_FILENO); };
  RunningFilter filter(job);
  reader.started();
  std::string out = reader.take(1000);
  usleep(300000);  // the pipe fills up
  filter.process().signal(SIGTERM);
  usleep(100000);
  out += reader.rest();
  const auto result = filter.finish();
  expectQuietEnd(result);
  const std::size_t head = loudStart().size() + 2;
  const std::size_t tail = loudCancelledEnd().size();
  ASSERT_GT(out.size(), head + tail);
  const std::size_t bands = out.size() - head - tail;
  EXPECT_EQ(bands % (5 + 576 + 3), 0U);
  EXPECT_LT(bands / (5 + 576 + 3), 1000U);
  EXPECT_TRUE(out.substr(0, head + bands) ==
              (loudStart() + flatBands(576, 8000)).substr(0, head + bands));
  EXPECT_EQ(hexOf(out.substr(head + bands)), hexOf(loudCancelledEnd()));
}

// The filter is blocked in a write when the signal arrives.
FilterJob jobFor(const SlowReader& reader) {
  FilterJob job = waitingJob();
  job.via = RasterVia::kFile;
  job.raster = rasterStream(RasterKind::kV3, {flatPage(576, 8000, 255)});
  job.beforeExec = [&reader] { dup2(reader.writeEnd(), STDOUT_FILENO); };
  return job;
}

// Giving up would leave the printer inside a bit image, which takes the next job for its dots.
TEST(Cancel, WaitsForAReaderThatStalls) {
  SlowReader reader;
  RunningFilter filter(jobFor(reader));
  reader.started();
  std::string out = reader.take(1000);
  usleep(300000);  // the pipe fills up
  filter.process().signal(SIGTERM);
  EXPECT_FALSE(waitUntil([&] { return filter.process().hasEnded(); }, 2)) << "gave up";
  out += reader.rest();
  expectQuietEnd(filter.finish());
  const std::string end = loudCancelledEnd();
  ASSERT_GT(out.size(), end.size());
  EXPECT_EQ(hexOf(out.substr(out.size() - end.size())), hexOf(end));
}

TEST(Cancel, EndsWhenAStalledReaderGoesAway) {
  auto reader = std::make_unique<SlowReader>();
  RunningFilter filter(jobFor(*reader));
  reader->started();
  ASSERT_FALSE(reader->take(1000).empty());
  usleep(300000);
  filter.process().signal(SIGTERM);
  usleep(100000);
  ASSERT_FALSE(filter.process().hasEnded());
  reader.reset();
  EXPECT_TRUE(waitUntil([&] { return filter.process().hasEnded(); }, 5)) << "still waits";
  EXPECT_EQ(filter.finish().signal, SIGPIPE);
}

// A signal between the stages of a page, before its bands: the page is not sent completely.
TEST(Cancel, IsSeenBetweenTheStagesOfALargePage) {
  for (const char* type : {"None", "QVDithering"}) {
    FilterJob job = waitingJob();
    job.via = RasterVia::kFile;
    job.options += std::string(" Brightness=20 HalftoneType=") + type;
    job.raster = rasterStream(RasterKind::kV3, {noisePage(576, 8000, 1)});
    RunningFilter filter(job);
    ASSERT_TRUE(filter.process().waitForError("Try print page"));
    filter.process().signal(SIGTERM);
    const auto result = filter.finish();
    expectQuietEnd(result);
    const std::string start = loudStart();
    EXPECT_EQ(hexOf(result.out.substr(0, start.size())), hexOf(start));
    const auto pages = printedPages(result.out);
    EXPECT_TRUE(pages.empty() || pages[0].rows.size() < 8000) << pages[0].rows.size();
    EXPECT_EQ(hexOf(result.out.substr(result.out.size() - loudCancelledEnd().size())),
              hexOf(loudCancelledEnd()));
  }
}

// Fills the wake-up pipe of the filter: the only pipe of which it holds both ends.
void fillWakeUpPipe(pid_t program) {
  std::map<fs::path, std::vector<fs::path>> descriptors;
  for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(program) + "/fd")) {
    descriptors[fs::read_symlink(entry)].push_back(entry);
  }
  int filled = 0;
  for (const auto& [target, ends] : descriptors) {
    if (target.string().rfind("pipe:", 0) != 0 || ends.size() != 2) continue;
    const int end = open(ends[0].c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const std::string block(65536, 'x');
    while (write(end, block.data(), block.size()) > 0) {
    }
    close(end);
    ++filled;
  }
  ASSERT_EQ(filled, 1);
}

// The signal handler writes to the wake-up pipe and must not block when that is full.
TEST(Cancel, HandlerDoesNotWaitForRoomInItsPipe) {
  SlowReader reader;
  FilterJob job = waitingJob();
  job.via = RasterVia::kFile;
  job.raster = rasterStream(RasterKind::kV3, {flatPage(576, 8000, 255)});
  job.beforeExec = [&] { dup2(reader.writeEnd(), STDOUT_FILENO); };
  job.timeoutSeconds = 10;
  RunningFilter filter(job);
  reader.started();
  const std::string first = reader.take(1000);
  usleep(100000);  // the filter waits for its reader
  fillWakeUpPipe(filter.process().id());
  filter.process().signal(SIGTERM);
  const std::string rest = reader.rest();
  expectQuietEnd(filter.finish());
  const std::string end = loudCancelledEnd();
  ASSERT_GT(rest.size(), end.size());
  EXPECT_EQ(hexOf(rest.substr(rest.size() - end.size())), hexOf(end));
}

TEST(Cancel, SecondSignalChangesNothing) {
  RunningFilter filter(waitingJob());
  feedUntilItWaits(filter);
  for (int i = 0; i < 5; ++i) filter.process().signal(SIGTERM);
  const auto result = filter.finish();
  expectQuietEnd(result);
  EXPECT_EQ(result.out, loudStart() + loudCancelledEnd());
}

}  // namespace
}  // namespace wren_test
