// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/saved_options.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "cli/output_file.h"

namespace wren::cli {
namespace {

// The name of a destination without its instance.
std::string queueName(const std::string& destination) {
  return destination.substr(0, destination.find('/'));
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
  std::vector<std::string> files = {configuration + "/lpoptions"};
  if (home != nullptr && *home != '\0') files.push_back(std::string(home) + "/.cups/lpoptions");
  for (const std::string& file : files) {
    if (access(file.c_str(), R_OK) != 0) continue;
    saved.push_back({file, parseSavedOptions(readWholeFile(file), queue)});
  }
  return saved;
}

}  // namespace wren::cli
