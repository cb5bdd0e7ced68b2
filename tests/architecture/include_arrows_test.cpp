// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Holds the arrows between the folders: it reads every #include line of the
// product code and refuses one that points against them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Arrows = std::map<std::string, std::set<std::string>>;

// A folder may always include itself.
const Arrows kAllowed = {
    {"common", {}},
    {"bitmap", {}},
    {"stencil", {}},
    {"escpos", {}},
    {"printer", {"common", "bitmap", "stencil"}},
    {"filter", {"printer", "common"}},
};

struct Include {
  std::string file;  // path from the root of the tree
  std::string target;
};

bool isSource(const fs::path& path) {
  return path.extension() == ".h" || path.extension() == ".cpp";
}

// The path of an #include line with either kind of brackets; empty for any other line.
std::string includedPath(const std::string& line) {
  const auto hash = line.find_first_not_of(" \t");
  if (hash == std::string::npos || line[hash] != '#') return {};
  const auto word = line.find("include", hash);
  if (word == std::string::npos) return {};
  const auto open = line.find_first_of("<\"", word);
  if (open == std::string::npos) return {};
  const auto close = line.find_first_of(">\"", open + 1);
  if (close == std::string::npos) return {};
  return line.substr(open + 1, close - open - 1);
}

std::vector<Include> includesOf(const std::string& folder) {
  const fs::path root = WREN_SOURCE_DIR;
  std::vector<Include> result;
  for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
    if (!entry.is_regular_file() || !isSource(entry.path())) continue;
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      const std::string target = includedPath(line);
      if (!target.empty()) result.push_back({fs::relative(entry.path(), root).string(), target});
    }
  }
  return result;
}

std::string folderOf(const std::string& includePath) {
  const auto slash = includePath.find('/');
  return slash == std::string::npos ? std::string() : includePath.substr(0, slash);
}

TEST(IncludeArrows, EachFolderIncludesOnlyWhatItMayKnow) {
  for (const auto& [folder, targets] : kAllowed) {
    const auto includes = includesOf(folder);
    EXPECT_FALSE(includes.empty()) << folder << " has no sources";
    for (const auto& include : includes) {
      const std::string to = folderOf(include.target);
      if (!kAllowed.contains(to) || to == folder) continue;
      EXPECT_TRUE(targets.contains(to)) << include.file << " includes " << include.target;
    }
  }
}

TEST(IncludeArrows, OnlyThePagePipelineSeesBitmapAndStencil) {
  for (const auto& include : includesOf("printer")) {
    const std::string to = folderOf(include.target);
    if (to != "bitmap" && to != "stencil") continue;
    const fs::path unit = fs::path(include.file).stem();
    EXPECT_TRUE(unit == "page_pipeline" || unit == "direct_dots")
        << include.file << " includes " << include.target;
  }
}

TEST(IncludeArrows, OwnHeadersAreNamedFromTheRoot) {
  for (const auto& [folder, targets] : kAllowed) {
    for (const auto& include : includesOf(folder)) {
      if (fs::path(include.target).extension() != ".h" || !folderOf(include.target).empty())
        continue;
      EXPECT_FALSE(fs::exists(fs::path(WREN_SOURCE_DIR) / folder / include.target))
          << include.file << " includes " << include.target << " without its folder";
    }
  }
}

TEST(IncludeArrows, TheStencilUsesNoMathLibrary) {
  for (const auto& include : includesOf("stencil")) {
    EXPECT_NE(include.target, "cmath") << include.file;
    EXPECT_NE(include.target, "math.h") << include.file;
  }
}

TEST(IncludeArrows, OnlySettingsAndPpdAccessSeeThePpdInterface) {
  const std::set<std::string> allowed = {"filter/settings.cpp", "common/ppd_access.h",
                                         "common/ppd_access.cpp"};
  for (const auto& [folder, targets] : kAllowed) {
    for (const auto& include : includesOf(folder)) {
      if (include.target != "cups/ppd.h") continue;
      EXPECT_TRUE(allowed.contains(include.file)) << include.file;
    }
  }
}

TEST(IncludeArrows, TheSettingsHeaderNeedsNoCups) {
  for (const auto& include : includesOf("filter")) {
    if (include.file != "filter/settings.h") continue;
    EXPECT_NE(folderOf(include.target), "cups") << include.target;
  }
}

}  // namespace
