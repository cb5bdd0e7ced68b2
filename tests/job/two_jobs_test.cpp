// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Two jobs in two threads of one process, as a shell that serves several printers runs them:
// the bytes, messages and images are those of the same jobs one after the other.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "common/log.h"
#include "job/job.h"
#include "tests/job/page_list.h"
#include "tests/printer/recording_printer.h"
#include "tests/support/filter_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren::job::Job;
using wren_test::noisePage;
using wren_test::PageList;
using wren_test::sameBytes;
using wren_test::TemporaryFolder;

struct JobOutput {
  std::string bytes;
  std::vector<std::string> messages;
  std::vector<std::string> images;  // kind and bytes
};

void append(void* messages, const char* text, std::size_t length) {
  static_cast<std::string*>(messages)->append(text, length);
}

JobOutput runJob(int halftoneType, unsigned seed, wren::CancelCheck cancel = {}) {
  const TemporaryFolder folder;
  wren_test::CaptureFile out;
  std::string messages;
  {
    const wren::MessageSink sink(append, &messages);
    Settings settings;
    settings.halftoneType = static_cast<DitherType>(halftoneType);
    settings.brightness = static_cast<int>(seed % 40) - 20;
    BandPrinter printer;
    printer.setDebugImageFolder(folder.path().string());
    PageList pages({noisePage(200, 120, seed), noisePage(333, 80, seed + 1)});
    Job job(settings, printer, out.stream(), cancel);
    job.begin();
    job.printPages(pages);
  }
  JobOutput output = {out.bytes(), wren_test::messageLines(messages), {}};
  for (const auto& image : wren_test::savedImages(folder.path())) {
    output.images.push_back(image.kind + image.bytes);
  }
  return output;
}

TEST(TwoJobsInThreads, GiveTheBytesMessagesAndImagesOfTwoProcesses) {
  for (int type = 0; type <= 8; ++type) {
    const unsigned seed = static_cast<unsigned>(type) * 10;
    const JobOutput expected[] = {runJob(type, seed), runJob((type + 4) % 9, seed + 5)};
    JobOutput got[2];
    std::thread first([&] { got[0] = runJob(type, seed); });
    std::thread second([&] { got[1] = runJob((type + 4) % 9, seed + 5); });
    first.join();
    second.join();
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(sameBytes(expected[i].bytes, got[i].bytes)) << "type " << type << ", job " << i;
      EXPECT_EQ(got[i].messages, expected[i].messages);
      ASSERT_EQ(got[i].images.size(), 4U);
      for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_TRUE(sameBytes(expected[i].images[k], got[i].images[k])) << k;
      }
    }
  }
}

// The check of one job is set by another thread; the other job does not notice.
TEST(TwoJobsInThreads, AreCancelledOneByOne) {
  std::atomic<bool> isCancelled = true;
  const wren::CancelCheck check = {
      [](const void* flag) { return static_cast<const std::atomic<bool>*>(flag)->load(); },
      &isCancelled};
  const std::string whole = runJob(QVDithering, 1).bytes;
  JobOutput cancelled;
  JobOutput other;
  std::thread first([&] { cancelled = runJob(Burkes, 1, check); });
  std::thread second([&] { other = runJob(QVDithering, 1); });
  first.join();
  second.join();
  // 64 zero bytes, the set-up, and the end of a cancelled job.
  EXPECT_EQ(cancelled.bytes.size(), 64U + 13 + 3 + 10);
  EXPECT_TRUE(sameBytes(whole, other.bytes));
}

}  // namespace
