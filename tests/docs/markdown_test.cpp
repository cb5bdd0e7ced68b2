// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/docs/markdown.h"

#include <gtest/gtest.h>

namespace wren_test {
namespace {

std::vector<std::string> targetsOf(const std::string& text) {
  std::vector<std::string> targets;
  for (const MarkdownLink& link : linksOf(parseMarkdown(text))) targets.push_back(link.target);
  return targets;
}

TEST(Markdown, FindsLinksAndPicturesOutsideOfCode) {
  EXPECT_EQ(targetsOf("see [a](A.md), ![b](b.png) and [`c`](C.md#d)\n`[x](x.md)`\n"
                      "```\n[y](y.md)\n```\n[e](#f)\n"),
            (std::vector<std::string>{"A.md", "b.png", "C.md#d", "#f"}));
}

TEST(Markdown, GivesHeadingsTheirAnchors) {
  EXPECT_EQ(anchorsOf(parseMarkdown("# Two words\n## What's `code`, 1.5?\n## Two words\ntext\n"
                                    "```\n# no heading\n```\n#no heading\n")),
            (std::set<std::string>{"two-words", "whats-code-15", "two-words-1"}));
}

TEST(Markdown, FindsInlineAndIndentedCode) {
  std::vector<std::string> code;
  for (const MarkdownLine& line : codeOf(parseMarkdown("a `b c` and `d`\n\n    e f\n  g\n"))) {
    code.push_back(line.text);
  }
  EXPECT_EQ(code, (std::vector<std::string>{"b c", "d", "e f"}));
}

TEST(Markdown, TakesCommandsFromShellBlocksOnly) {
  const Markdown document =
      parseMarkdown("```sh\none \\\n  two\nthree\n```\n```\nnot this\n```\n```sh\nfour\n```\n");
  std::vector<std::string> commands;
  for (const MarkdownLine& line : document.commands) commands.push_back(line.text);
  EXPECT_EQ(commands, (std::vector<std::string>{"one   two", "three", "four"}));
  EXPECT_EQ(document.commands[2].number, 10);
}

}  // namespace
}  // namespace wren_test
