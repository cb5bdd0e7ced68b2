// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/docs/markdown.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>

#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

// Folders with documents of the project. Others, such as build, hold copies.
constexpr const char* kFolders[] = {"docs", "tests", "packaging", "examples", "dev"};

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isAsciiPunctuation(char c) {
  return static_cast<unsigned char>(c) < 0x80 && std::isalnum(static_cast<unsigned char>(c)) == 0 &&
         c != '-' && c != '_';
}

std::string slugOf(const std::string& heading) {
  std::string slug;
  for (const char c : heading) {
    if (c == ' ') {
      slug += '-';
    } else if (!isAsciiPunctuation(c)) {
      slug += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return slug;
}

// Inline code without its contents, so that nothing in it looks like a link.
std::string withoutCode(const std::string& text) {
  static const std::regex code("`[^`]*`");
  return std::regex_replace(text, code, "``");
}

}  // namespace

Markdown parseMarkdown(const std::string& text) {
  Markdown document;
  std::istringstream lines(text);
  std::string fence;
  bool continues = false;
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (trimmed(line).starts_with("```")) {
      fence = fence.empty() ? trimmed(line) : "";
      continues = false;
    } else if (fence.empty()) {
      document.prose.push_back({number, line});
    } else if (fence == "```sh") {
      const bool isOpen = line.ends_with('\\');
      if (isOpen) line.pop_back();
      if (continues) {
        document.commands.back().text += line;
      } else {
        document.commands.push_back({number, line});
      }
      continues = isOpen;
    }
  }
  return document;
}

std::vector<MarkdownLink> linksOf(const Markdown& document) {
  static const std::regex link(R"(\]\(([^)\s]+)\))");
  std::vector<MarkdownLink> links;
  for (const MarkdownLine& line : document.prose) {
    const std::string text = withoutCode(line.text);
    for (std::sregex_iterator i(text.begin(), text.end(), link); i != std::sregex_iterator(); ++i) {
      links.push_back({line.number, (*i)[1]});
    }
  }
  return links;
}

std::vector<MarkdownLine> codeOf(const Markdown& document) {
  static const std::regex inlineCode("`([^`]+)`");
  std::vector<MarkdownLine> code;
  for (const MarkdownLine& line : document.prose) {
    if (line.text.starts_with("    ")) {
      code.push_back({line.number, trimmed(line.text)});
      continue;
    }
    for (std::sregex_iterator i(line.text.begin(), line.text.end(), inlineCode);
         i != std::sregex_iterator(); ++i) {
      code.push_back({line.number, (*i)[1]});
    }
  }
  return code;
}

std::set<std::string> anchorsOf(const Markdown& document) {
  std::map<std::string, int> seen;
  std::set<std::string> anchors;
  for (const MarkdownLine& line : document.prose) {
    const auto text = line.text.find_first_not_of('#');
    if (text == 0 || text == std::string::npos || line.text[text] != ' ') continue;
    const std::string slug = slugOf(trimmed(line.text.substr(text)));
    const int earlier = seen[slug]++;
    anchors.insert(earlier == 0 ? slug : slug + "-" + std::to_string(earlier));
  }
  return anchors;
}

std::vector<std::string> documentNames() {
  const fs::path root = WREN_SOURCE_DIR;
  std::vector<std::string> names;
  const auto add = [&](const fs::directory_entry& entry) {
    if (entry.path().extension() == ".md") {
      names.push_back(entry.path().lexically_relative(root).string());
    }
  };
  for (const auto& entry : fs::directory_iterator(root)) add(entry);
  for (const char* folder : kFolders) {
    if (!fs::exists(root / folder)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) add(entry);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string projectFile(const std::string& name) {
  return readFile(fs::path(WREN_SOURCE_DIR) / name);
}

std::string testNameOf(const std::string& document) {
  std::string name = document.substr(0, document.size() - 3);
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

}  // namespace wren_test
