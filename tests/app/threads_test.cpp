// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A printer of each paper in one process, at the same time, with every halftone and format. Built
// with the thread sanitizer, the program ends with a status of its own when it has seen a data
// race.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/filter_of_pages.h"
#include "tests/app/running_app.h"
#include "tests/app/sample_documents.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

struct PrintedJob {
  std::string name;  // format and halftone
  std::string halftone;
  JobOutcome outcome;
};

std::vector<PrintedJob> printMatrix(RunningApp& app, const std::string& printer, unsigned seed) {
  std::vector<PrintedJob> jobs;
  for (const SampleDocument& document : sampleDocuments(seed)) {
    for (const char* halftone : kHalftones) {
      jobs.push_back({std::string(document.format) + ", " + halftone, halftone,
                      app.print(document.bytes, document.format,
                                {JobAttribute::keyword("halftone-type", halftone)}, printer)});
    }
  }
  return jobs;
}

// The kept pages of one job.
std::vector<std::filesystem::path> pagesOf(const RunningApp& app, int printer, int job) {
  const std::string end =
      "-printer-" + std::to_string(printer) + "-job-" + std::to_string(job) + ".ras";
  std::vector<std::filesystem::path> pages;
  for (const auto& page : app.pages()) {
    if (page.string().ends_with(end)) pages.push_back(page);
  }
  return pages;
}

TEST(AppThreads, PrintTheBytesOfTheFilterOnThreePrintersAtOnce) {
  RunningApp app({.paperMm = 80, .options = {"--more-papers", "58,112"}});
  const std::string names[] = {"wren", "wren2", "wren3"};
  std::vector<PrintedJob> jobs[3];
  std::vector<std::thread> clients;
  for (unsigned i = 0; i < 3; ++i) {
    clients.emplace_back([&, i] { jobs[i] = printMatrix(app, names[i], 7 * i + 1); });
  }
  for (std::thread& client : clients) client.join();
  for (int printer = 0; printer < 3; ++printer) {
    SCOPED_TRACE(names[printer]);
    const auto papers = app.waitForPapers(jobs[printer].size(), names[printer]);
    ASSERT_EQ(papers.size(), jobs[printer].size()) << app.log();
    for (std::size_t i = 0; i < papers.size(); ++i) {
      const PrintedJob& job = jobs[printer][i];
      SCOPED_TRACE(job.name);
      EXPECT_EQ(job.outcome.state, IPP_JSTATE_COMPLETED) << job.outcome.message;
      const auto pages = pagesOf(app, printer + 1, job.outcome.id);
      EXPECT_FALSE(pages.empty());
      EXPECT_THAT(papers[i], SameBytes(filterBytesOf(pages, {.halftone = job.halftone})));
    }
  }
  const ProcessResult end = app.stop();
  EXPECT_EQ(end.exitStatus, 0) << end.err;
  EXPECT_THAT(end.err, testing::Not(testing::HasSubstr("ThreadSanitizer")));
}

}  // namespace
}  // namespace wren_test
