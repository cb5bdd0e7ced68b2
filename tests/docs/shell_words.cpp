// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/docs/shell_words.h"

#include <cctype>
#include <string_view>

namespace wren_test {
namespace {

struct Token {
  std::string text;
  bool isOperator = false;
};

constexpr std::string_view kOperatorLetters = "|&;<>";

// The length of the quoted or plain piece at `at`, which is appended to `word`.
std::size_t takePiece(const std::string& line, std::size_t at, std::string& word) {
  const char quote = line[at];
  if (quote != '\'' && quote != '"') {
    word += quote;
    return 1;
  }
  const std::size_t end = line.find(quote, at + 1);
  const std::size_t length = end == std::string::npos ? std::string::npos : end - at - 1;
  word += line.substr(at + 1, length);
  return end == std::string::npos ? line.size() - at : end - at + 1;
}

std::vector<Token> tokens(const std::string& line) {
  std::vector<Token> result;
  std::size_t at = 0;
  while (at < line.size()) {
    if (line[at] == ' ') {
      ++at;
    } else if (line[at] == '#') {
      break;
    } else if (kOperatorLetters.find(line[at]) != std::string_view::npos) {
      Token token{"", true};
      while (at < line.size() && kOperatorLetters.find(line[at]) != std::string_view::npos) {
        token.text += line[at++];
      }
      result.push_back(token);
    } else {
      Token token;
      while (at < line.size() && line[at] != ' ' &&
             kOperatorLetters.find(line[at]) == std::string_view::npos) {
        at += takePiece(line, at, token.text);
      }
      result.push_back(token);
    }
  }
  return result;
}

bool isAssignment(const std::string& word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0) return false;
  for (const char c : word.substr(0, equals)) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '_') return false;
  }
  return true;
}

bool isRedirection(const std::string& text) {
  return text.find_first_of("<>") != std::string::npos;
}

}  // namespace

std::vector<SimpleCommand> simpleCommands(const std::string& line) {
  std::vector<SimpleCommand> commands(1);
  bool isTarget = false;
  for (const Token& token : tokens(line)) {
    if (token.isOperator) {
      isTarget = isRedirection(token.text);
      if (!isTarget) commands.emplace_back();
    } else if (isTarget) {
      isTarget = false;
    } else if (!commands.back().empty() || (token.text != "sudo" && !isAssignment(token.text))) {
      commands.back().push_back(token.text);
    }
  }
  std::erase_if(commands, [](const SimpleCommand& command) { return command.empty(); });
  return commands;
}

}  // namespace wren_test
