// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// No source uses what g++'s standard library has and clang's libc++ 14 lacks, which
// `./wren test --preset clang` builds with. A Mac has a libc++ as well. That preset is
// not built every day; this test runs with all others.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

namespace wren::architecture {
namespace {

namespace fs = std::filesystem;

const std::regex kMissing(R"(std::(jthread|stop_token|format\(|ranges::[a-z_]+\())");

bool isSource(const fs::path& path) {
  return path.extension() == ".h" || path.extension() == ".cpp";
}

TEST(StandardLibrary, HasWhatTheSourcesUseInClangAsWell) {
  int sources = 0;
  for (const char* folder : {"app", "bench", "bitmap", "cli", "common", "dither", "escpos",
                             "filter", "fuzz", "job", "preview", "printer", "stencil", "tests"}) {
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(WREN_SOURCE_DIR) / folder)) {
      if (!entry.is_regular_file() || !isSource(entry.path())) continue;
      ++sources;
      std::ifstream in(entry.path());
      for (std::string line; std::getline(in, line);) {
        EXPECT_FALSE(std::regex_search(line, kMissing))
            << entry.path() << " uses what libc++ 14 lacks: " << line;
      }
    }
  }
  EXPECT_GT(sources, 500);
}

TEST(StandardLibrary, WhatClangLacksIsRecognised) {
  for (const std::string name : {"jthread", "stop_token", "format(", "ranges::find("}) {
    EXPECT_TRUE(std::regex_search("  std::" + name, kMissing)) << name;
  }
  EXPECT_FALSE(std::regex_search("  std::thread", kMissing));
}

}  // namespace
}  // namespace wren::architecture
