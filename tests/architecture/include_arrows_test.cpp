// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The include rules of docs/ARCHITECTURE.md, checked on every #include line of the
// product: which folder may include which, and no circles between units.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace wren::architecture {
namespace {

namespace fs = std::filesystem;

const fs::path kRoot = WREN_SOURCE_DIR;

/// From a name to the names that it includes.
using Arrows = std::map<std::string, std::set<std::string>>;

/// The folders that each folder may include, besides itself.
const Arrows kAllowed = {
    {"common", {}},
    {"dither", {"common"}},
    {"bitmap", {"dither", "common"}},
    {"stencil", {"common"}},
    {"printer", {"dither", "stencil", "common"}},
    {"job", {"printer", "common"}},
    {"filter", {"job", "printer", "common"}},
    {"escpos", {"common"}},
    {"preview", {"escpos", "common"}},
    {"app", {"job", "printer", "preview", "escpos", "common"}},
    {"cli", {"filter", "job", "preview", "escpos", "common"}},
};

/// Folders with sources that are not part of the product.
const std::set<std::string> kNotProduct = {"bench", "fuzz", "tests"};

struct Include {
  std::string file;    ///< path from the root of the source tree
  std::string target;  ///< as written between the brackets or quotes
};

bool isSource(const fs::path& path) {
  return path.extension() == ".h" || path.extension() == ".cpp";
}

/// The path of an #include line; empty for any other line.
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
  std::vector<Include> includes;
  for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
    if (!entry.is_regular_file() || !isSource(entry.path())) continue;
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      const std::string target = includedPath(line);
      if (!target.empty()) includes.push_back({fs::relative(entry.path(), kRoot), target});
    }
  }
  return includes;
}

std::string folderOf(const std::string& includePath) {
  const auto slash = includePath.find('/');
  return slash == std::string::npos ? std::string() : includePath.substr(0, slash);
}

/// The unit of a file: its path without the extension, common to header and source.
std::string unitOf(const std::string& path) {
  return fs::path(path).replace_extension().string();
}

/// The includes between the units of one folder.
Arrows unitArrows(const std::string& folder) {
  Arrows arrows;
  for (const Include& include : includesOf(folder)) {
    const std::string from = unitOf(include.file);
    const std::string to = unitOf(include.target);
    if (folderOf(include.target) != folder || from == to) continue;
    arrows[from].insert(to);
  }
  return arrows;
}

/// The shortest way along the arrows from `start` back to it, as "a -> b -> a"; empty if there is
/// none. Units that sort before `start` are left out, so that each circle has one start only.
std::string circleFrom(const std::string& start, const Arrows& arrows) {
  std::vector<std::vector<std::string>> paths = {{start}};
  std::set<std::string> seen;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto targets = arrows.find(paths[i].back());
    if (targets == arrows.end()) continue;
    for (const std::string& next : targets->second) {
      if (next < start || !seen.insert(next).second) continue;
      paths.push_back(paths[i]);
      paths.back().push_back(next);
      if (next != start) continue;
      std::string text;
      for (const std::string& unit : paths.back()) text += (text.empty() ? "" : " -> ") + unit;
      return text;
    }
  }
  return {};
}

/// All circles, one per line; at most one for each first unit.
std::string circlesIn(const Arrows& arrows) {
  std::string circles;
  for (const auto& [unit, targets] : arrows) {
    const std::string circle = circleFrom(unit, arrows);
    if (!circle.empty()) circles += circle + "\n";
  }
  return circles;
}

TEST(IncludeArrows, EachFolderIncludesOnlyWhatItMayKnow) {
  for (const auto& [folder, targets] : kAllowed) {
    const auto includes = includesOf(folder);
    EXPECT_FALSE(includes.empty()) << folder << " has no sources";
    for (const Include& include : includes) {
      const std::string to = folderOf(include.target);
      if (!kAllowed.contains(to) || to == folder) continue;
      EXPECT_TRUE(targets.contains(to)) << include.file << " includes " << include.target;
    }
  }
}

TEST(IncludeArrows, TheTableNamesEveryFolderOfTheProduct) {
  for (const auto& entry : fs::directory_iterator(kRoot)) {
    const std::string folder = entry.path().filename();
    if (!entry.is_directory() || kNotProduct.contains(folder)) continue;
    const fs::directory_iterator files(entry.path());
    const bool hasSources =
        std::any_of(begin(files), end(files), [](const auto& file) { return isSource(file); });
    EXPECT_TRUE(!hasSources || kAllowed.contains(folder)) << folder << " is not in kAllowed";
  }
}

TEST(IncludeArrows, EachFolderHasNoCirclesBetweenItsUnits) {
  for (const auto& [folder, targets] : kAllowed) {
    EXPECT_EQ(circlesIn(unitArrows(folder)), "") << folder;
  }
}

TEST(Circles, AreFoundWhateverTheirLength) {
  EXPECT_EQ(circlesIn({{"a", {"b", "c"}}, {"b", {"c"}}}), "");
  EXPECT_EQ(circlesIn({{"a", {"b"}}, {"b", {"a"}}}), "a -> b -> a\n");
  EXPECT_EQ(circlesIn({{"a", {"b", "d"}}, {"b", {"c"}}, {"c", {"a"}}}), "a -> b -> c -> a\n");
  EXPECT_EQ(circlesIn({{"a", {"c"}}, {"c", {"d"}}, {"d", {"c"}}}), "c -> d -> c\n");
  EXPECT_EQ(circlesIn({{"a", {"b"}}, {"b", {"a", "c"}}, {"c", {"b"}}}),
            "a -> b -> a\nb -> c -> b\n");
}

TEST(IncludeArrows, OnlyPageDotsSeesTheHalftoneMethods) {
  for (const Include& include : includesOf("printer")) {
    const std::string to = folderOf(include.target);
    if (to != "dither" && to != "stencil") continue;
    EXPECT_EQ(unitOf(include.file), "printer/page_dots")
        << include.file << " includes " << include.target;
  }
}

TEST(IncludeArrows, OwnHeadersAreNamedFromTheRoot) {
  for (const auto& [folder, targets] : kAllowed) {
    for (const Include& include : includesOf(folder)) {
      if (fs::path(include.target).extension() != ".h" || !folderOf(include.target).empty())
        continue;
      EXPECT_FALSE(fs::exists(kRoot / folder / include.target))
          << include.file << " includes " << include.target << " without its folder";
    }
  }
}

TEST(IncludeArrows, TheStencilUsesNoMathLibrary) {
  for (const Include& include : includesOf("stencil")) {
    EXPECT_NE(include.target, "cmath") << include.file;
    EXPECT_NE(include.target, "math.h") << include.file;
  }
}

TEST(IncludeArrows, OnlyTheFilterAndPpdAccessSeeThePpdInterface) {
  const std::set<std::string> allowed = {"filter/settings.cpp", "filter/printer_description.cpp",
                                         "common/ppd_access.h", "common/ppd_access.cpp"};
  for (const auto& [folder, targets] : kAllowed) {
    for (const Include& include : includesOf(folder)) {
      if (include.target != "cups/ppd.h") continue;
      EXPECT_TRUE(allowed.contains(include.file)) << include.file;
    }
  }
}

// So that a shell without CUPS's printer files can fill the settings in.
TEST(IncludeArrows, TheSettingsAndTheirOptionTableNeedNoCups) {
  for (const Include& include : includesOf("job")) {
    const std::string unit = unitOf(include.file);
    if (unit != "job/settings" && unit != "job/option_table") continue;
    EXPECT_NE(folderOf(include.target), "cups") << include.file << " includes " << include.target;
  }
}

}  // namespace
}  // namespace wren::architecture
