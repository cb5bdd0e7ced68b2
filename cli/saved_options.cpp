// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/saved_options.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "cli/console.h"
#include "cli/output_file.h"

namespace wren::cli {
namespace {

// The name of a destination without its instance.
std::string queueName(const std::string& destination) {
  return destination.substr(0, destination.find('/'));
}

// A word as an extended regular expression that sed takes between slashes.
std::string expressionFor(const std::string& word) {
  constexpr std::string_view kSpecial = "\\^$.|?*+()[]{}/";
  std::string expression;
  for (const char c : word) {
    if (kSpecial.find(c) != std::string_view::npos) expression += '\\';
    expression += c;
  }
  return expression;
}

}  // namespace

JobOptions parseSavedOptions(const std::string& text, const std::string& queue) {
  JobOptions options;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string kind;
    std::string destination;
    words >> kind >> destination;
    if ((kind != "Dest" && kind != "Default") || queueName(destination) != queue) continue;
    std::string rest;
    std::getline(words, rest);
    for (const auto& option : readJobOptions(rest)) options.push_back(option);
  }
  return options;
}

std::vector<SavedOptions> readSavedOptions(const std::string& configuration,
                                           const std::string& queue) {
  std::vector<SavedOptions> saved;
  const char* home = std::getenv("HOME");
  saved.push_back({configuration + "/lpoptions", true, {}});
  if (home != nullptr && *home != '\0') {
    saved.push_back({std::string(home) + "/.cups/lpoptions", false, {}});
  }
  std::erase_if(saved, [](const auto& s) { return access(s.file.c_str(), R_OK) != 0; });
  for (SavedOptions& s : saved) s.options = parseSavedOptions(readWholeFile(s.file), queue);
  return saved;
}

// lpoptions writes to one of the files alone: for a user the own one; for root the own one in CUPS
// 2.4.2, that of the machine in 2.4.10.
std::string removalCommand(const SavedOptions& saved, const std::string& queue,
                           const std::string& option, bool isRoot) {
  if (!isRoot && !saved.isOfMachine) return "lpoptions -p " + queue + " -r " + shellWord(option);
  const std::string script = "/^(Dest|Default)\\s+" + expressionFor(queue) + "(\\/\\S*)?\\s/s/\\s" +
                             expressionFor(option) + "(=(\"[^\"]*\"|\\S*))?(\\s|$)/\\3/";
  return "sudo sed -i -E " + shellWord(script) + " " + shellWord(saved.file);
}

}  // namespace wren::cli
