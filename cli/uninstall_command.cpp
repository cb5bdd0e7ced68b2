// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/uninstall_command.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <vector>

#include "cli/child_process.h"
#include "cli/console.h"
#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/output_file.h"
#include "cli/queue_access.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

constexpr char kPackage[] = "printer-driver-wren";

bool hasPackage() {
  const ChildOutput answer =
      captureOutput({"dpkg-query", "-W", "-f=${db:Status-Status}", kPackage}, 10);
  return answer.status == 0 && answer.text == "installed";
}

// A list that somebody has changed must not reach other files.
bool isOurFile(const fs::path& path) {
  const std::string name = path.filename().string();
  const bool isNamed = name.find("wren") != std::string::npos;
  return path.is_absolute() && path == path.lexically_normal() && isNamed;
}

std::vector<std::string> installedFiles(const Installation& installation) {
  std::vector<std::string> files;
  if (access(installation.manifest().c_str(), R_OK) != 0) return files;
  std::istringstream lines(readWholeFile(installation.manifest()));
  for (std::string line; std::getline(lines, line);) {
    if (isOurFile(line)) files.push_back(installation.pathOf(line));
  }
  files.push_back(installation.manifest());
  return files;
}

std::vector<std::string> debugImages(const Installation& installation) {
  std::vector<std::string> images;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(installation.imageFolder(), ignored)) {
    const std::string name = entry.path().filename().string();
    for (const char* prefix : kDebugImagePrefixes) {
      if (name.starts_with(prefix) && name.ends_with(".bmp")) images.push_back(entry.path());
    }
  }
  return images;
}

void removeQueues(bool dryRun) {
  Scheduler scheduler;
  if (!scheduler.runs()) {
    note("the scheduler does not run; its queues are left as they are");
    return;
  }
  for (const Queue& queue : scheduler.queues()) {
    if (!queue.isOurs()) continue;
    if (!dryRun) {
      checkAnswer(scheduler.remove(queue.name), "the queue '" + queue.name + "' cannot be removed",
                  "wren uninstall");
    }
    say((dryRun ? "would remove the queue " : "removed the queue ") + queue.name);
  }
}

// Folders that are empty afterwards and were Wren's go as well.
void removeFile(const std::string& file) {
  if (unlink(file.c_str()) != 0 && errno != ENOENT) {
    throw Failure(kFailed,
                  "'" + file + "' cannot be removed: " + std::generic_category().message(errno));
  }
  const fs::path folder = fs::path(file).parent_path();
  std::error_code notEmpty;
  if (folder.filename() == "wren") fs::remove(folder, notEmpty);
}

void removePackage(bool dryRun) {
  say(dryRun ? std::string("would call apt-get purge ") + kPackage
             : std::string("calling apt-get purge ") + kPackage);
  if (dryRun) return;
  // What was said comes before what apt-get says.
  std::fflush(stdout);
  const int status =
      runChild({"apt-get", "purge", "-y", "-q", kPackage}, STDOUT_FILENO, STDERR_FILENO);
  if (status != 0) throw Failure(kFailed, "apt-get ended with status " + std::to_string(status));
}

}  // namespace

int runUninstall(const UninstallArguments& arguments) {
  const Installation installation(arguments.root);
  const auto files = installedFiles(installation);
  const bool isPackage = arguments.root.empty() && files.empty() && hasPackage();
  if (files.empty() && !isPackage) {
    throw Failure(kFailed, "nothing is installed: neither the package nor " +
                               installation.manifest() + " is there");
  }
  if (!arguments.dryRun && geteuid() != 0) {
    throw Failure(kFailed, "only root may remove it: sudo wren uninstall");
  }
  if (!arguments.keepQueues) removeQueues(arguments.dryRun);
  if (isPackage) {
    removePackage(arguments.dryRun);
    return kDone;
  }
  std::vector<std::string> all = files;
  const auto images = debugImages(installation);
  all.insert(all.end(), images.begin(), images.end());
  for (const std::string& file : all) {
    if (!arguments.dryRun) removeFile(file);
    say((arguments.dryRun ? "would remove " : "removed ") + file);
  }
  return kDone;
}

}  // namespace wren::cli
