// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Compares the decoder of escpos/ with the independent one of tests/support on
// every golden job: same commands, same pages, same dots.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "escpos/reader.h"
#include "tests/golden/golden_job.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/temporary_folder.h"

namespace wren::escpos {
namespace {

const std::filesystem::path kJobs = std::filesystem::path(WREN_SOURCE_DIR) / "tests/golden/jobs";

const std::map<CommandKind, std::string> kNames = {
    {CommandKind::kNul, "zeros"},
    {CommandKind::kInitialise, "initialize"},
    {CommandKind::kHome, "page start"},
    {CommandKind::kBitImage, "columns"},
    {CommandKind::kFeed, "feed"},
    {CommandKind::kCut, "cut"},
    {CommandKind::kDrawerPulse, "drawer"},
    {CommandKind::kDirection, "direction"},
    {CommandKind::kBeep, "buzzer"},
    {CommandKind::kBuzzerSetup, "buzzer set-up"},
    {CommandKind::kStatusRequest, "job end"},
};

std::string nameOf(CommandKind kind) {
  const auto name = kNames.find(kind);
  return name == kNames.end() ? "unknown" : name->second;
}

// The rows of a page in the form of the other decoder: one character per column, which is two
// dots wide in single density.
std::vector<std::string> rowsOnPaper(const Paper& paper, std::uint64_t top,
                                     const wren_test::PrintedPage& page) {
  const unsigned columnWidth = page.mode == 0 ? 2 : 1;
  std::vector<std::string> rows;
  for (std::size_t row = 0; row < page.rows.size(); ++row) {
    std::vector<std::uint8_t> dots(page.rows[row].size() * columnWidth);
    renderRow(paper, top + row, dots);
    std::string text;
    for (std::size_t x = 0; x < dots.size(); x += columnWidth) {
      text += dots[x] != 0 ? '#' : '.';
      EXPECT_EQ(dots[x], dots[x + columnWidth - 1]);
    }
    rows.push_back(text);
  }
  return rows;
}

std::vector<std::uint64_t> pageTops(const Paper& paper) {
  std::vector<std::uint64_t> tops;
  for (const Mark& mark : paper.marks) {
    if (mark.kind == MarkKind::kPage) tops.push_back(mark.atUnits / kUnitsPerRow);
  }
  return tops;
}

class GoldenAgreement : public testing::TestWithParam<std::string> {};

TEST_P(GoldenAgreement, BothDecodersReadTheSame) {
  const auto job = golden::parseJob(GetParam(), wren_test::readFile(kJobs / (GetParam() + ".job")));
  const Reading reading = readAll(job.output);
  const std::string text(job.output.begin(), job.output.end());

  const auto others = wren_test::decodePrinterBytes(text);
  ASSERT_EQ(reading.commands.size(), others.size());
  for (std::size_t i = 0; i < others.size(); ++i) {
    EXPECT_EQ(nameOf(reading.commands[i].kind), others[i].name) << i;
    EXPECT_EQ(reading.commands[i].length, others[i].bytes.size()) << i;
  }
  EXPECT_EQ(reading.totals.problems, 0u);

  const auto pages = wren_test::printedPages(text);
  const auto tops = pageTops(reading.paper);
  ASSERT_EQ(tops.size(), pages.size());
  for (std::size_t i = 0; i < pages.size(); ++i) {
    EXPECT_EQ(rowsOnPaper(reading.paper, tops[i], pages[i]), pages[i].rows) << "page " << i;
  }
}

std::vector<std::string> goldenNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kJobs)) {
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Jobs, GoldenAgreement, testing::ValuesIn(goldenNames()),
                         [](const auto& job) {
                           std::string name = job.param;
                           std::replace_if(
                               name.begin(), name.end(),
                               [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
                           return name;
                         });

TEST(GoldenJobs, AreThere) {
  EXPECT_GE(goldenNames().size(), 60u);
}

}  // namespace
}  // namespace wren::escpos
