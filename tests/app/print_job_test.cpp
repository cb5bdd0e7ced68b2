// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// How a job ends when one of its pages cannot be printed.

#include "app/print_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/printer_bytes.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

using wren::app::PageKeeper;
using wren::app::PrintJob;

constexpr unsigned kWidthPx = 576;
constexpr unsigned kHeightPx = 24;
constexpr const char* kFeedAndCut = "1B 4A 10 1B 4A C0 1D 56 01 1F 1B 1F 42 65 65 70 06 1B 76";

// The stream of a job, in memory.
class Stream {
 public:
  Stream() : file_(open_memstream(&text_, &size_)) {}
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    std::fclose(file_);
    std::free(text_);
  }
  std::FILE* file() const { return file_; }
  std::string bytes() const {
    std::fflush(file_);
    return {text_, size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* file_;
};

bool sendPage(PrintJob& job, unsigned rows = kHeightPx) {
  const std::vector<std::uint8_t> row(kWidthPx, 255);
  if (!job.beginPage(kWidthPx, kHeightPx)) return false;
  for (unsigned y = 0; y < rows; ++y) job.addRow(row.data());
  return job.endPage();
}

class PrintJobTest : public testing::Test {
 protected:
  PrintJob makeJob(PageKeeper* keeper = nullptr) {
    PrintJob::Plan plan;
    plan.settings.core.docCutType = 2;
    plan.settings.core.feedCutAfterJobEnd = 12;
    plan.settings.core.cashDrawerSetting = 2;
    PrintJob::Surroundings surroundings;
    surroundings.out = out.file();
    surroundings.keeper = keeper;
    return {plan, surroundings};
  }

  // One page, feed and cut; no drawer.
  void expectCancelledEndAfterOnePage() const {
    EXPECT_EQ(printedPages(out.bytes()).size(), 1U);
    EXPECT_THAT(hexOf(out.bytes()), testing::EndsWith(kFeedAndCut));
    EXPECT_THAT(hexOf(out.bytes()), testing::Not(testing::HasSubstr("1B 70")));
  }

  Stream out;
};

TEST_F(PrintJobTest, OpensTheDrawerAfterPagesThatAreAllPrinted) {
  PrintJob job = makeJob();
  ASSERT_TRUE(sendPage(job));
  EXPECT_TRUE(job.finish(true));
  EXPECT_THAT(hexOf(out.bytes()), testing::HasSubstr("1B 70"));
}

TEST_F(PrintJobTest, EndsLikeACancelledOneAfterAPageThatWasNotEnded) {
  PrintJob job = makeJob();
  ASSERT_TRUE(sendPage(job));
  ASSERT_TRUE(job.beginPage(kWidthPx, kHeightPx));
  EXPECT_FALSE(job.finish(true));
  expectCancelledEndAfterOnePage();
}

TEST_F(PrintJobTest, EndsLikeACancelledOneAfterAPageWithoutAllItsRows) {
  PrintJob job = makeJob();
  ASSERT_TRUE(sendPage(job));
  EXPECT_FALSE(sendPage(job, kHeightPx - 1));
  EXPECT_FALSE(sendPage(job)) << "no page after one that was not printed";
  EXPECT_FALSE(job.finish(true));
  expectCancelledEndAfterOnePage();
}

TEST_F(PrintJobTest, SaysThatAPageCannotBeKept) {
  const TemporaryFolder folder;
  const std::string pages = folder.path() / "pages";
  std::filesystem::create_directory(pages);
  PageKeeper keeper(pages);
  PrintJob job = makeJob(&keeper);
  ASSERT_TRUE(sendPage(job));
  std::filesystem::remove_all(pages);
  EXPECT_FALSE(sendPage(job));
  EXPECT_EQ(job.fault(), "the page cannot be kept on disk");
  EXPECT_FALSE(job.finish(true));
  expectCancelledEndAfterOnePage();
}

}  // namespace
}  // namespace wren_test
