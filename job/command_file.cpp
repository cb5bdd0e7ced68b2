// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/command_file.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "job/control_commands.h"

namespace wren::job {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr std::string_view kLineEnds = "\r\n";

char lowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// In the case rules of the print system: ASCII letters only, whatever the locale.
bool isSameWord(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

// A text of the file as part of a message: it may hold anything.
std::string quoted(std::string_view text) {
  constexpr std::size_t kShown = 40;
  std::string shown(text.substr(0, kShown));
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return "'" + shown + (text.size() > kShown ? "...'" : "'");
}

// The next word of a line, which is taken off; empty at its end.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<CommandKind> kindOf(std::string_view word) {
  for (std::size_t i = 0; i < kCommandNames.size(); ++i) {
    if (isSameWord(word, kCommandNames[i])) return static_cast<CommandKind>(i);
  }
  return std::nullopt;
}

std::optional<std::int32_t> parseMm(std::string_view text) {
  std::int32_t mm = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, failed] = std::from_chars(text.data(), end, mm);
  if (failed != std::errc() || stopped != end || mm < 1 || mm > kMaxFeedMm) return std::nullopt;
  return mm;
}

std::optional<std::int32_t> parseCut(std::string_view text) {
  if (isSameWord(text, "full")) return kFullCutType;
  if (isSameWord(text, "partial")) return kPartialCutType;
  return std::nullopt;
}

class Parser {
 public:
  // The head is a comment, so it needs nothing more.
  CommandFile parse(std::string_view text) {
    if (text.size() > kMaxCommandFile) {
      fail("The command file is longer than " + std::to_string(kMaxCommandFile) + " bytes");
    } else if (!text.starts_with(kCommandFileHead)) {
      fail("The command file does not begin with " + std::string(kCommandFileHead));
    } else {
      parseLines(text);
    }
    return std::move(file_);
  }

 private:
  void parseLines(std::string_view text) {
    while (!text.empty() && !isFull_) {
      const std::size_t length = std::min(text.find_first_of(kLineEnds), text.size());
      ++line_;
      parseLine(text.substr(0, length));
      const bool isPair = text.substr(length, 2) == "\r\n";
      text.remove_prefix(std::min(length + (isPair ? 2 : 1), text.size()));
    }
  }

  void parseLine(std::string_view line) {
    if (line.size() > kMaxCommandLine) {
      failLine("longer than " + std::to_string(kMaxCommandLine) + " bytes");
      return;
    }
    std::string_view rest = line.substr(0, line.find('#'));
    const std::string_view word = takeWord(rest);
    if (word.empty()) return;
    const auto kind = kindOf(word);
    if (!kind.has_value()) {
      failLine("unknown command " + quoted(word));
    } else {
      parseCommand(*kind, trimmed(rest));
    }
  }

  void parseCommand(CommandKind kind, std::string_view argument) {
    PrinterCommand command = {kind, {}};
    if (kind == CommandKind::kFeed) {
      command.value = parseMm(argument);
      if (!command.value.has_value()) {
        failArgument("Feed takes 1 to " + std::to_string(kMaxFeedMm) + " (mm)", argument);
        return;
      }
    } else if (kind == CommandKind::kCut && !argument.empty()) {
      command.value = parseCut(argument);
      if (!command.value.has_value()) {
        failArgument("Cut takes full, partial or nothing", argument);
        return;
      }
    } else if (!argument.empty()) {
      failArgument(std::string(kCommandNames[static_cast<std::size_t>(kind)]) + " takes nothing",
                   argument);
      return;
    }
    add(command);
  }

  void add(const PrinterCommand& command) {
    isFull_ = file_.commands.size() == kMaxCommands;
    if (isFull_) {
      failLine("more than " + std::to_string(kMaxCommands) + " commands; the rest is left out");
    } else {
      file_.commands.push_back(command);
    }
  }

  void fail(std::string error) { file_.errors.push_back(std::move(error)); }

  void failLine(const std::string& fault) { fail("Line " + std::to_string(line_) + ": " + fault); }

  void failArgument(const std::string& rule, std::string_view argument) {
    failLine(argument.empty() ? rule : rule + ", not " + quoted(argument));
  }

  CommandFile file_;
  std::size_t line_ = 0;
  bool isFull_ = false;
};

}  // namespace

CommandFile parseCommandFile(std::string_view text) {
  return Parser().parse(text);
}

}  // namespace wren::job
