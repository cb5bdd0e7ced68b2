// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs the real filter on every golden job and every hand-derived job. Compares
// printer bytes, messages, exit status and debug images.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/golden/golden_job.h"
#include "tests/golden/hand_derived_jobs.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

const fs::path kGolden = fs::path(WREN_SOURCE_DIR) / "tests/golden";

std::string ppdOf(const golden::JobInput& input) {
  wren_test::PpdText ppd;
  for (const reference::PpdOption& option : golden::optionsOf(input).ppd) {
    if (option.keyword == "PageSize") {
      ppd.pageSizes(option.choices, option.defaultChoice);
    } else {
      ppd.option(option.keyword, option.choices, option.defaultChoice);
    }
  }
  if (!input.maxMediaWidth.empty()) ppd.attribute("MaxMediaWidth", input.maxMediaWidth);
  return ppd.text();
}

wren_test::RasterPage rasterPageOf(const reference::Page& page) {
  wren_test::RasterPage raster;
  raster.header = wren_test::greyHeader(page.width, page.height, page.hwResolutionX);
  raster.header.NumCopies = page.numCopies;
  raster.header.cupsBytesPerLine = page.bytesPerLine;
  raster.header.cupsBitsPerPixel = page.bitsPerPixel;
  if (page.bitsPerPixel == 1) raster.header.cupsBitsPerColor = 1;
  if (page.bitsPerPixel == 24) {
    raster.header.cupsNumColors = 3;
    raster.header.cupsColorSpace = CUPS_CSPACE_RGB;
  }
  raster.pixels.assign(page.pixels.begin(), page.pixels.end());
  if (!page.readable) raster.pixels.resize(raster.pixels.size() / 2);
  return raster;
}

wren_test::FilterResult run(const golden::JobInput& input) {
  std::vector<wren_test::RasterPage> pages;
  for (const reference::Page& page : golden::pagesOf(input, kGolden / "pages"))
    pages.push_back(rasterPageOf(page));
  wren_test::FilterJob job;
  job.ppd = ppdOf(input);
  job.options = golden::optionText(input);
  job.raster = wren_test::rasterStream(wren_test::RasterKind::kV3, pages);
  return wren_test::runFilterJob(job);
}

golden::Bytes bytesOf(const std::string& text) {
  return golden::Bytes(text.begin(), text.end());
}

// "ERROR:*" matches any line that starts with "ERROR:".
bool matches(const std::string& line, const std::string& expected) {
  if (expected == "ERROR:*") return line.starts_with("ERROR:");
  return line == expected;
}

void expectLog(const wren_test::FilterResult& result, const std::vector<std::string>& expected) {
  const std::vector<std::string> lines = wren_test::messageLines(result.err);
  const bool same = lines.size() == expected.size() &&
                    std::equal(lines.begin(), lines.end(), expected.begin(), matches);
  if (!same) {
    EXPECT_EQ(lines, expected);
  }
}

std::string nameOf(const std::string& text) {
  std::string name;
  for (const char c : text) name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
}

// Golden files ------------------------------------------------------------------

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, Job) {
  const std::string text = wren_test::readFile(kGolden / "jobs" / (GetParam() + ".job"));
  const golden::GoldenJob job = golden::parseJob(GetParam(), text);
  ASSERT_FALSE(job.output.empty());
  const wren_test::FilterResult result = run(job.input);

  EXPECT_EQ(golden::hexText(bytesOf(result.out)), golden::hexText(job.output));
  expectLog(result, job.log);
  EXPECT_TRUE(result.exited(job.status)) << result.exitStatus << " signal " << result.signal;
  ASSERT_EQ(result.images.size(), job.dumps.size());
  for (std::size_t i = 0; i < job.dumps.size(); ++i) {
    EXPECT_EQ(result.images[i].kind, job.dumps[i].kind) << i;
    EXPECT_EQ(result.images[i].number, static_cast<long>(i));
    EXPECT_EQ(result.images[i].bytes.size(), job.dumps[i].size) << i;
    EXPECT_EQ(golden::fnv1a64(bytesOf(result.images[i].bytes)), job.dumps[i].hash) << i;
  }
}

std::vector<std::string> goldenNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(kGolden / "jobs"))
    names.push_back(entry.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Files, Golden, testing::ValuesIn(goldenNames()),
                         [](const auto& job) { return nameOf(job.param); });

// Hand-derived jobs ---------------------------------------------------------------

class HandDerived : public testing::TestWithParam<std::size_t> {};

TEST_P(HandDerived, Job) {
  const golden::HandDerivedJob job = golden::handDerivedJobs()[GetParam()];
  const wren_test::FilterResult result = run(job.input);

  EXPECT_EQ(golden::hexText(bytesOf(result.out)), golden::hexText(job.output));
  EXPECT_TRUE(result.exited(job.input.pages.empty() ? 1 : 0)) << result.err;
  EXPECT_EQ(result.images.size(), 2 * job.input.pages.size());
  for (std::size_t i = 0; i < job.dumps.size(); ++i) {
    const wren_test::SavedImage& image = result.images.at(i);
    EXPECT_EQ(golden::withoutGreyPalette(image.kind, bytesOf(image.bytes)), job.dumps[i]) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Jobs, HandDerived,
                         testing::Range(std::size_t{0}, golden::handDerivedJobs().size()),
                         [](const auto& job) {
                           return golden::handDerivedJobs()[job.param].input.name;
                         });

}  // namespace
