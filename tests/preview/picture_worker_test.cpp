// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/picture_worker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "tests/escpos/printer_streams.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::repeat;
using streams::operator+;

bool becomesTrue(const std::function<bool()>& condition) {
  for (int i = 0; i < 20'000 && !condition(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return condition();
}

// While it lives, nothing is written to standard output: the worker stops at its first line.
class HeldOutput {
 public:
  HeldOutput() { ::flockfile(stdout); }
  ~HeldOutput() { release(); }
  HeldOutput(const HeldOutput&) = delete;
  HeldOutput& operator=(const HeldOutput&) = delete;

  void release() {
    if (isHeld_) ::funlockfile(stdout);
    isHeld_ = false;
  }

 private:
  bool isHeld_ = true;
};

class PictureWorkerTest : public testing::Test {
 protected:
  PictureWorkerTest() {
    options_.directory = folder_.path();
    testing::internal::CaptureStdout();
  }
  ~PictureWorkerTest() override {
    if (!isRead_) testing::internal::GetCapturedStdout();
  }

  std::string takeOutput() {
    isRead_ = true;
    return testing::internal::GetCapturedStdout();
  }

  FinishedJob jobOf(const Bytes& bytes, const std::string& ending = "") {
    auto job = std::make_unique<ReceivedJob>(options_, number_);
    job->take(bytes);
    job->endStream();
    return {std::move(job), ending, FileDescriptor()};
  }

  std::string file(const std::string& name) const { return folder_.file(name); }

  // The worker has begun with the first job, which waits no longer.
  void waitUntilTheFirstIsDrawn() const {
    ASSERT_TRUE(becomesTrue([&] { return readPng(file("job-0001.png")).height > 0; }));
  }

  const ScratchFolder folder_;
  Options options_;
  unsigned number_ = 1;
  bool isRead_ = false;
};

TEST_F(PictureWorkerTest, DrawsOneJobAfterAnother) {
  {
    PictureWorker worker;
    worker.add(jobOf(feed(16)));
    worker.add(jobOf(feed(32), "cut short"));
    EXPECT_TRUE(becomesTrue([&] { return worker.doneCount() == 2; }));
  }
  EXPECT_EQ(takeOutput(), file("job-0001.prn") +
                              ": 0 pages, 1.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 3 bytes, " +
                              file("job-0001.png") + "\n" + file("job-0002.prn") +
                              ": 0 pages, 2.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 3 bytes, "
                              "cut short, " +
                              file("job-0002.png") + "\n");
}

// One is being drawn, 64 wait.
TEST_F(PictureWorkerTest, IsFullWhen64JobsWait) {
  HeldOutput held;
  PictureWorker worker;
  worker.add(jobOf(feed(16)));
  waitUntilTheFirstIsDrawn();
  for (int i = 0; i < 64; ++i) {
    EXPECT_FALSE(worker.isFull()) << i;
    worker.add(jobOf(feed(16)));
  }
  EXPECT_TRUE(worker.isFull());
  EXPECT_EQ(worker.doneCount(), 0u);
  held.release();
  EXPECT_TRUE(becomesTrue([&] { return worker.doneCount() == 65; }));
  EXPECT_FALSE(worker.isFull());
}

// A paper with 10 MB of dots: the seventh that waits passes 64 MiB.
TEST_F(PictureWorkerTest, IsFullWhen64MebibytesOfPaperWait) {
  Bytes paper;
  for (int i = 0; i < 2500; ++i) paper = std::move(paper) + bitImage(1, repeat(4000, 0)) + feed(1);
  HeldOutput held;
  PictureWorker worker;
  worker.add(jobOf(paper));
  waitUntilTheFirstIsDrawn();
  for (int i = 0; i < 7; ++i) {
    EXPECT_FALSE(worker.isFull()) << i;
    worker.add(jobOf(paper));
  }
  EXPECT_TRUE(worker.isFull());
  held.release();
  EXPECT_TRUE(becomesTrue([&] { return worker.doneCount() == 8; }));
  EXPECT_FALSE(worker.isFull());
}

TEST_F(PictureWorkerTest, DrawsWhatWaitsAtItsEnd) {
  {
    PictureWorker worker;
    for (int i = 0; i < 5; ++i) worker.add(jobOf(feed(16)));
  }
  EXPECT_EQ(readPng(file("job-0005.png")).height, 8u);
  const std::string out = takeOutput();
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 5);
}

// Whoever waits for the end of the connection finds the picture complete.
TEST_F(PictureWorkerTest, ClosesTheConnectionWhenTheFilesAreComplete) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const FileDescriptor host(ends[0]);
  HeldOutput held;
  PictureWorker worker;
  FinishedJob job = jobOf(feed(16));
  job.connection = FileDescriptor(ends[1]);
  worker.add(std::move(job));
  waitUntilTheFirstIsDrawn();
  pollfd waited = {host.get(), POLLIN, 0};
  EXPECT_EQ(::poll(&waited, 1, 0), 0) << "its line is not written yet";
  held.release();
  EXPECT_EQ(::poll(&waited, 1, 20'000), 1);
  char byte = 0;
  EXPECT_EQ(::recv(host.get(), &byte, 1, 0), 0);
  EXPECT_EQ(worker.doneCount(), 1u);
}

}  // namespace
}  // namespace wren::preview
