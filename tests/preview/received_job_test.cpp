// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/received_job.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/escpos/printer_streams.h"
#include "tests/preview/file_size_limit.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::repeat;
using streams::operator+;

// At 254 dpi, 8 rows are 0.8 mm.
const Bytes kLine = bitImage(1, hex("FF 00 FF 00 FF 00 FF 00")) + feed(16);

class ReceivedJobTest : public testing::Test {
 protected:
  ReceivedJobTest() {
    options_.directory = folder_.path();
    options_.style.dpi = 254;
  }

  std::string file(const std::string& name) const { return folder_.file(name); }

  // The line about the job; what goes to standard error is in `err_`.
  std::string finish(ReceivedJob& job, const std::string& ending = "") {
    testing::internal::CaptureStderr();
    std::string line = job.finish(ending, {});
    err_ = testing::internal::GetCapturedStderr();
    return line;
  }

  const ScratchFolder folder_;
  Options options_;
  unsigned number_ = 1;
  std::string err_;
};

TEST_F(ReceivedJobTest, IsReportedInOneLine) {
  ReceivedJob job(options_, number_);
  job.take(kLine + hex("1D5600"));
  job.endStream();
  EXPECT_EQ(job.error(), "");
  EXPECT_EQ(finish(job), file("job-0001.prn") +
                             ": 0 pages, 0.8 mm, 1 cut, 0 drawer pulses, 0 beeps, 19 bytes, " +
                             file("job-0001.png"));
  EXPECT_EQ(err_, "");
  EXPECT_EQ(number_, 2u);
}

TEST_F(ReceivedJobTest, NamesItsProblemsItsEndingItsPicturesAndTheirErrorsInThisOrder) {
  options_.split = true;
  ReceivedJob job(options_, number_);
  job.take(kLine + hex("1D5600") + kLine + hex("41 1B40 42"));
  job.endStream();
  folder_.write("job-0001-2.png", hex("01"));
  EXPECT_EQ(finish(job, "cut short"),
            file("job-0001.prn") +
                ": 0 pages, 1.6 mm, 1 cut, 0 drawer pulses, 0 beeps, 39 bytes, 2 problems, "
                "cut short, " +
                file("job-0001-1.png") + ", " + file("job-0001-2.png") + ": File exists");
  EXPECT_EQ(err_, "wren-preview: " + file("job-0001.prn") +
                      ": offset 35: 1 unknown byte\nwren-preview: " + file("job-0001.prn") +
                      ": offset 38: 1 unknown byte\n");
}

TEST_F(ReceivedJobTest, TellsItsProgress) {
  ReceivedJob job(options_, number_);
  job.take(kLine);
  job.take({});
  job.take(kLine);
  EXPECT_EQ(job.progress(), file("job-0001.prn") + ": 32 bytes, 1.6 mm so far");
}

TEST_F(ReceivedJobTest, CanBeReadByOthersAfterAFlush) {
  ReceivedJob job(options_, number_);
  job.take(kLine);
  job.flush();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), kLine);
}

TEST_F(ReceivedJobTest, HasANumberOfAtLeastFourDigits) {
  for (const unsigned number : {1U, 999U, 9999U, 10000U}) {
    number_ = number;
    const ReceivedJob job(options_, number_);
    EXPECT_EQ(number_, number + 1);
  }
  for (const char* name : {"job-0001.prn", "job-0999.prn", "job-9999.prn", "job-10000.prn"}) {
    EXPECT_TRUE(std::filesystem::exists(file(name))) << name;
  }
}

// The three places at which a full disk is noticed. The stream is drawn all the same.
TEST_F(ReceivedJobTest, SaysThatTheDiskIsFullWhenItTakesMuch) {
  ReceivedJob job(options_, number_);
  {
    const FileSizeLimit full(1000);
    job.take(repeat(100'000, 0));
  }
  EXPECT_EQ(job.error(), file("job-0001.prn") + ": File too large");
}

TEST_F(ReceivedJobTest, SaysThatTheDiskIsFullWhenItIsFlushed) {
  ReceivedJob job(options_, number_);
  {
    const FileSizeLimit full(10);
    job.take(kLine);
    EXPECT_EQ(job.error(), "");
    job.flush();
  }
  EXPECT_EQ(job.error(), file("job-0001.prn") + ": File too large");
}

TEST_F(ReceivedJobTest, SaysThatTheDiskIsFullAtItsEnd) {
  ReceivedJob job(options_, number_);
  {
    const FileSizeLimit full(10);
    job.take(kLine);
    job.endStream();
  }
  EXPECT_EQ(job.error(), file("job-0001.prn") + ": File too large");
  EXPECT_EQ(finish(job), file("job-0001.prn") +
                             ": 0 pages, 0.8 mm, 0 cuts, 0 drawer pulses, 0 beeps, 16 bytes, " +
                             file("job-0001.png") + ", " + file("job-0001.prn") +
                             ": File too large");
  EXPECT_EQ(readPng(file("job-0001.png")).height, 8u);
}

// The paper is what fills the memory while a job waits to be drawn.
TEST_F(ReceivedJobTest, KnowsTheMemoryOfItsPaper) {
  ReceivedJob job(options_, number_);
  const std::uint64_t before = job.paperBytes();
  for (int i = 0; i < 10; ++i) job.take(bitImage(1, repeat(1000, 0x55)) + feed(16));
  EXPECT_GE(job.paperBytes() - before, 10'000u);
  EXPECT_LT(job.paperBytes() - before, 100'000u);
}

}  // namespace
}  // namespace wren::preview
