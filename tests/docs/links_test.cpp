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

class DocumentLinks : public testing::TestWithParam<std::string> {};

TEST_P(DocumentLinks, LeadSomewhere) {
  for (const MarkdownLink& link : linksOf(parseMarkdown(projectFile(GetParam())))) {
    EXPECT_EQ(faultOf(GetParam(), link.target), "")
        << GetParam() << ":" << link.line << ": " << link.target;
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

}  // namespace
}  // namespace wren_test
