// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The golden files: they contain what the reference implementation computes, and
// parsing a file returns what was written. The filter does not run here.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "tests/golden/golden_job.h"
#include "tests/golden/hand_derived_jobs.h"
#include "tests/golden/job_list.h"
#include "tests/golden/page_source.h"

namespace {

namespace fs = std::filesystem;

const std::string kJobs = WREN_SOURCE_DIR "/tests/golden/jobs";
const std::string kPages = WREN_SOURCE_DIR "/tests/golden/pages";

std::string contents(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(GoldenFiles, ContainWhatTheReferenceImplementationComputes) {
  for (const golden::JobInput& input : golden::jobList()) {
    const auto result = reference::runJob(golden::optionsOf(input), golden::pagesOf(input, kPages));
    EXPECT_EQ(contents(kJobs + "/" + input.name + ".job"), golden::formatJob(input, result))
        << input.name << ": run golden_writer and review the difference";
  }
}

TEST(GoldenFiles, AreExactlyTheListedJobs) {
  std::set<std::string> listed;
  for (const golden::JobInput& input : golden::jobList())
    EXPECT_TRUE(listed.insert(input.name + ".job").second) << input.name << " is listed twice";
  std::set<std::string> found;
  for (const auto& entry : fs::directory_iterator(kJobs)) found.insert(entry.path().filename());
  EXPECT_EQ(found, listed);
  EXPECT_GE(found.size(), 60U);
}

TEST(GoldenFiles, ParseBackAsWritten) {
  for (const golden::JobInput& input : golden::jobList()) {
    const auto result = reference::runJob(golden::optionsOf(input), golden::pagesOf(input, kPages));
    const auto job = golden::parseJob(input.name, golden::formatJob(input, result));
    EXPECT_EQ(job.output, reference::bytesOf(result.commands)) << input.name;
    EXPECT_EQ(job.log, result.log) << input.name;
    EXPECT_EQ(job.status, result.status) << input.name;
    ASSERT_EQ(job.dumps.size(), result.dumps.size()) << input.name;
    for (std::size_t i = 0; i < job.dumps.size(); ++i) {
      EXPECT_EQ(job.dumps[i].kind, result.dumps[i].kind) << input.name;
      EXPECT_EQ(job.dumps[i].size, result.dumps[i].bytes.size()) << input.name;
      EXPECT_EQ(job.dumps[i].hash, golden::fnv1a64(result.dumps[i].bytes)) << input.name;
    }
    EXPECT_EQ(golden::formatJob(job.input, result), golden::formatJob(input, result));
  }
}

TEST(ReferenceImplementation, AgreesWithTheJobsDerivedByHand) {
  for (const golden::HandDerivedJob& job : golden::handDerivedJobs()) {
    const auto result =
        reference::runJob(golden::optionsOf(job.input), golden::pagesOf(job.input, kPages));
    EXPECT_EQ(golden::hexText(reference::bytesOf(result.commands)), golden::hexText(job.output))
        << job.input.name;
    for (std::size_t i = 0; i < job.dumps.size(); ++i) {
      const reference::Dump& dump = result.dumps.at(i);
      EXPECT_EQ(golden::withoutGreyPalette(dump.kind, dump.bytes), job.dumps[i]) << job.input.name;
    }
  }
}

TEST(GoldenFiles, HexTextShortensRuns) {
  EXPECT_EQ(golden::hexText({0x1B, 0x40}), "1B 40");
  EXPECT_EQ(golden::hexText({0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}), "00 00 00 FF*4");
  EXPECT_EQ(golden::hexText({0, 0, 0, 0, 0, 0}, 2), "00 00 00*4");
  EXPECT_THROW(golden::parseJob("x", "[stdout]\nABC\n"), std::runtime_error);
  EXPECT_THROW(golden::parseJob("x", "[nothing]\nABC\n"), std::runtime_error);
}

// The values are from the test vectors of the authors of the hash.
TEST(GoldenFiles, HashIsFnv1a) {
  EXPECT_EQ(golden::fnv1a64({}), 0xCBF29CE484222325U);
  EXPECT_EQ(golden::fnv1a64({'a'}), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(golden::fnv1a64({'f', 'o', 'o', 'b', 'a', 'r'}), 0x85944171F73967E8U);
}

TEST(GoldenFiles, PageSourcesGiveTheirPixels) {
  using golden::pagePixels;
  EXPECT_EQ(pagePixels("flat:9", 2, 1, ""), (golden::Bytes{9, 9}));
  EXPECT_EQ(pagePixels("ramp", 3, 1, ""), (golden::Bytes{0, 127, 255}));
  EXPECT_EQ(pagePixels("rows:1", 2, 2, ""), (golden::Bytes{0, 0, 255, 255}));
  EXPECT_EQ(pagePixels("column:0", 2, 2, ""), (golden::Bytes{255, 0, 255, 0}));
  EXPECT_NE(pagePixels("noise:1", 9, 9, ""), pagePixels("noise:2", 9, 9, ""));
  EXPECT_THROW(pagePixels("rain", 2, 2, ""), std::runtime_error);
  EXPECT_THROW(pagePixels("pgm:drawing.pgm", 2, 2, kPages), std::runtime_error);
}

}  // namespace
