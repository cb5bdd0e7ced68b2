// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Every link in the documents leads to a file of the project, and to a heading in it.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/docs/markdown.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

// Why a link leads nowhere; empty if it does not.
std::string faultOf(const std::string& document, const std::string& target) {
  if (target.find("://") != std::string::npos) return "is outside of the project";
  const std::size_t hash = target.find('#');
  const std::string path = target.substr(0, hash);
  const fs::path folder = fs::path(document).parent_path();
  const std::string file = path.empty() ? document : (folder / path).lexically_normal().string();
  if (!fs::exists(fs::path(WREN_SOURCE_DIR) / file)) return "names no file";
  if (hash == std::string::npos) return {};
  const auto anchors = anchorsOf(parseMarkdown(projectFile(file)));
  return anchors.count(target.substr(hash + 1)) == 0 ? "names no heading" : "";
}

// Code that names a file or a unit of the project: "dither/methods.h", "job/option_table".
bool isProjectPath(const std::string& code) {
  const std::size_t slash = code.find('/');
  const bool isPlain = code.find_first_not_of(
                           "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                           "0123456789_-./") == std::string::npos;
  if (!isPlain || slash == 0 || slash == std::string::npos) return false;
  const fs::path top = fs::path(WREN_SOURCE_DIR) / code.substr(0, slash);
  return code.substr(0, slash) != "build" && fs::is_directory(top);
}

// A unit is named without its extension.
bool isThere(const std::string& code) {
  for (const char* ending : {"", ".h", ".cpp"}) {
    if (fs::exists(fs::path(WREN_SOURCE_DIR) / (code + ending))) return true;
  }
  return false;
}

class DocumentLinks : public testing::TestWithParam<std::string> {};

TEST_P(DocumentLinks, LeadSomewhere) {
  for (const MarkdownLink& link : linksOf(parseMarkdown(projectFile(GetParam())))) {
    EXPECT_EQ(faultOf(GetParam(), link.target), "")
        << GetParam() << ":" << link.line << ": " << link.target;
  }
}

// The changes of a version name the files of that version.
TEST_P(DocumentLinks, AndPathsInSentencesLeadSomewhere) {
  if (GetParam() == "CHANGELOG.md") GTEST_SKIP() << "it is about the past";
  for (const MarkdownLine& line : codeOf(parseMarkdown(projectFile(GetParam())))) {
    if (!isProjectPath(line.text)) continue;
    EXPECT_PRED1(isThere, line.text) << GetParam() << ":" << line.number;
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, DocumentLinks, testing::ValuesIn(documentNames()),
                         [](const auto& test) { return testNameOf(test.param); });

TEST(Links, ThatLeadNowhereAreFound) {
  EXPECT_EQ(faultOf("docs/PRINTING.md", "PREVIEW.md#a-virtual-printer"), "");
  EXPECT_EQ(faultOf("docs/PRINTING.md", "ABSENT.md"), "names no file");
  EXPECT_EQ(faultOf("docs/PRINTING.md", "PREVIEW.md#absent"), "names no heading");
  EXPECT_EQ(faultOf("README.md", "#which-halftone"), "");
  EXPECT_EQ(faultOf("README.md", "https://example.org"), "is outside of the project");
}

TEST(Paths, ThatLeadNowhereAreFound) {
  for (const char* path :
       {"dither/methods.h", "job/option_table", "docs/absent.md", "tests/docs/"}) {
    EXPECT_PRED1(isProjectPath, path);
  }
  for (const char* other : {"lp", "/usr/share/ppd", "build/dev", "a/b", "job/*"}) {
    EXPECT_FALSE(isProjectPath(other)) << other;
  }
  EXPECT_PRED1(isThere, "job/option_table");
  EXPECT_FALSE(isThere("docs/absent.md"));
}

}  // namespace
}  // namespace wren_test
