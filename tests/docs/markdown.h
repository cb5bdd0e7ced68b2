// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the tests of the documents need of Markdown: links, anchors of headings,
// and blocks of shell commands.

#pragma once

#include <set>
#include <string>
#include <vector>

namespace wren_test {

struct MarkdownLine {
  int number;  ///< from 1
  std::string text;
};

struct Markdown {
  std::vector<MarkdownLine> prose;  ///< the lines outside of fenced blocks
  std::vector<MarkdownLine>
      commands;  ///< the lines of the blocks marked `sh`, continued ones joined
};

Markdown parseMarkdown(const std::string& text);

struct MarkdownLink {
  int line;
  std::string target;  ///< as written: a path, an anchor or both
};

/// Links and pictures, also those whose text is code. `[a](b)` in inline code is no link.
std::vector<MarkdownLink> linksOf(const Markdown& document);

/// Inline code, and the lines of blocks that are indented by four spaces.
std::vector<MarkdownLine> codeOf(const Markdown& document);

/// The anchors that a hosting's page gives the headings: lower case, spaces as hyphens, other
/// punctuation left out; "-1" and so on for a repeated heading.
std::set<std::string> anchorsOf(const Markdown& document);

/// All documents of the project, relative to its folder.
std::vector<std::string> documentNames();

/// The text of a file relative to the project's folder; empty if there is none.
std::string projectFile(const std::string& name);

/// A document's name as the name of a test.
std::string testNameOf(const std::string& document);

}  // namespace wren_test
