// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The test suites of the print system for IPP printers, run by its ipptool against the
// application. What fails there is listed with its reason in ipp_suites_failures.txt; a test that
// fails and is not listed, or is listed and passes, fails this one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/support/process.h"
#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

const fs::path kSuites = "/usr/share/cups/ipptool";

struct Report {
  std::set<std::string> passed;
  std::set<std::string> failed;
  std::set<std::string> seen;  ///< passed, failed and skipped
  std::string text;
};

// A line of ipptool: the name of a test, cut or filled with blanks to 68 characters, and a verdict.
Report parse(const std::string& text) {
  static const std::regex line(R"(^    (.{68}) \[(PASS|FAIL|SKIP)\]$)");
  Report report;
  report.text = text;
  std::istringstream in(text);
  for (std::string row; std::getline(in, row);) {
    std::smatch match;
    if (!std::regex_match(row, match, line)) continue;
    std::string name = match[1];
    name.erase(name.find_last_not_of(' ') + 1);
    report.seen.insert(name);
    if (match[2] == "PASS") report.passed.insert(name);
    if (match[2] == "FAIL") report.failed.insert(name);
  }
  return report;
}

// The suites name documents that their package does not have: ours stand in.
void writeSamples(const TemporaryFolder& folder) {
  const std::string page = rasterStream(RasterKind::kPwg, {flatPage(576, 80, 128)});
  static const std::regex file(R"(^\s*FILE\s+([^$\s]+)\s*$)");
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      std::smatch match;
      if (!std::regex_match(line, match, file)) continue;
      const fs::path sample = folder.path() / match[1].str();
      if (fs::exists(sample)) continue;
      fs::create_directories(sample.parent_path());
      const std::string kind = sample.extension();
      if (kind == ".pdf") {
        fs::copy_file(WREN_EXAMPLES "/receipt.pdf", sample);
      } else if (kind == ".jpg") {
        fs::copy_file(WREN_SAMPLE_JPEG, sample);
      } else {
        std::ofstream(sample, std::ios::binary) << page;
      }
    }
  }
}

Report runSuite(const std::string& suite, RunningApp& app) {
  const TemporaryFolder folder;
  for (const char* name : {"ipp-1.1.test", "ipp-2.0.test", "ipp-everywhere.test"}) {
    fs::copy_file(kSuites / name, folder.path() / name);
  }
  writeSamples(folder);
  folder.write("sample.pwg", rasterStream(RasterKind::kPwg, {flatPage(576, 80, 128)}));
  ProcessSpec spec;
  spec.program = "/usr/bin/ipptool";
  spec.arguments = {
      "ipptool",        "-t",           "-I", "-f", "sample.pwg", "-d", "filetype=image/pwg-raster",
      app.printerUri(), suite + ".test"};
  spec.environment = {"PATH=/usr/bin:/bin", "HOME=" + folder.path().string(), "LC_ALL=C.UTF-8"};
  spec.workingFolder = folder.path();
  spec.timeoutSeconds = 100;
  const ProcessResult result = runProcess(spec);
  return parse(result.out + result.err);
}

// The names of the listed failures of a suite. A line: suite, tab, name, tab, reason.
std::set<std::string> listedFailures(const std::string& suite) {
  std::set<std::string> names;
  std::ifstream in(WREN_IPP_FAILURES);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    std::string ofSuite;
    std::string name;
    std::string reason;
    std::getline(row, ofSuite, '\t');
    std::getline(row, name, '\t');
    std::getline(row, reason);
    EXPECT_FALSE(reason.empty()) << line;
    if (ofSuite == suite) names.insert(name);
  }
  return names;
}

struct Suite {
  const char* name;
  std::size_t passing;  ///< at least so many pass
  const char* last;     ///< its last test: a suite ends early where a document is missing
};

void PrintTo(const Suite& suite, std::ostream* out) {
  *out << suite.name;
}

class IppSuite : public testing::TestWithParam<Suite> {};

TEST_P(IppSuite, FailsWhereTheListSaysSoAndNowhereElse) {
  ASSERT_TRUE(fs::exists(kSuites / "ipp-1.1.test")) << "cups-ipp-utils is not installed";
  RunningApp app;
  // printer-up-time counts seconds and must not be 0.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  const Report report = runSuite(GetParam().name, app);
  EXPECT_THAT(report.seen, testing::Contains(GetParam().last)) << report.text;
  EXPECT_GE(report.passed.size(), GetParam().passing) << report.text;
  EXPECT_EQ(report.failed, listedFailures(GetParam().name)) << report.text;
}

INSTANTIATE_TEST_SUITE_P(
    Standards, IppSuite,
    testing::Values(Suite{"ipp-1.1", 20, "Print-Job with job-hold-until"},
                    Suite{"ipp-2.0", 21,
                          "PWG 5100.12 section 6.2 - Required Printer Description "
                          "Attributes"},
                    Suite{"ipp-everywhere", 21, "Print onepage-letter @ 720dpi, srgb-8, gzip"}));

}  // namespace
}  // namespace wren_test
