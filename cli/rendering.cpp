// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/rendering.h"

#include <fcntl.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <sstream>

#include "cli/child_process.h"
#include "cli/failure.h"
#include "cli/output_file.h"
#include "common/handles.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

// Lines of cupsfilter itself and of the chain's bookkeeping.
constexpr std::array<std::string_view, 10> kNotErrors = {
    "DEBUG", "INFO", "NOTICE", "WARN", "ATTR:", "STATE:", "PAGE:", "PPD:", "cupsfilter:", "After "};
constexpr std::array<std::string_view, 5> kAboutProcesses = {
    " stopped with status ", " crashed on signal ", " exited with no errors", " did not terminate",
    "page logging turned off"};

bool isRendererError(std::string_view line) {
  const auto starts = [&](std::string_view word) { return line.starts_with(word); };
  const auto holds = [&](std::string_view word) { return line.find(word) != line.npos; };
  if (std::any_of(kNotErrors.begin(), kNotErrors.end(), starts)) return false;
  if (std::any_of(kAboutProcesses.begin(), kAboutProcesses.end(), holds)) return false;
  const bool saysError =
      starts("ERROR:") || starts("CRIT:") || starts("EMERG:") || starts("ALERT:");
  return saysError || holds("rror");
}

// Without the keyword, the asterisks of Ghostscript and blanks.
std::string_view textOfError(std::string_view line) {
  if (line.starts_with("ERROR:")) line.remove_prefix(6);
  const auto first = line.find_first_not_of(" *\t");
  return first == line.npos ? std::string_view() : line.substr(first);
}

FileDescriptor createFile(const std::string& path) {
  FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!file) failToWrite(path, errno);
  return file;
}

Arguments commandFor(const RenderRequest& request) {
  Arguments command = {
      "cupsfilter", "-p",         request.ppd, "-m", "application/vnd.cups-raster",
      "-i",         request.type, "-e",        "-n", std::to_string(request.copies)};
  for (const auto& [name, value] : request.options) {
    command.insert(command.end(), {"-o", joinJobOptions({{name, value}})});
  }
  command.push_back(fs::absolute(request.document).string());
  return command;
}

// The filters of CUPS do not say that they had no room.
void failIfFull(const std::string& rasterPath) {
  constexpr std::uintmax_t kLeast = 64 << 10;
  const std::string folder = fs::path(rasterPath).parent_path().parent_path();
  struct statvfs space = {};  // not fs::space: in libc++ 14 nothing available is the largest number
  if (statvfs(folder.c_str(), &space) != 0) return;
  if (std::uintmax_t{space.f_bavail} * space.f_frsize < kLeast) failToWrite(folder, ENOSPC);
}

// The line begins with the name of the document already.
std::string withoutPath(const std::string& reason, const std::string& document) {
  const std::string path = fs::absolute(document).string() + ": ";
  const auto at = reason.find(path);
  return at == reason.npos ? reason : reason.substr(at + path.size());
}

[[noreturn]] void failToRender(const RenderRequest& request, const std::string& log) {
  if (log.find("No filter to convert") != std::string::npos) {
    throw Failure(kSetup, "CUPS has no filter for " + request.type +
                              " here; install it with: sudo apt install cups-filters");
  }
  const std::string reason = withoutPath(firstRendererError(log), request.document);
  throw Failure(kDocument, "'" + request.document + "' cannot be rendered" +
                               (reason.empty() ? "; it may be damaged" : ": " + reason));
}

}  // namespace

void addReceiptDefaults(JobOptions& options, const std::string& type) {
  const bool isTurned =
      hasOption(options, "landscape") || hasOption(options, "orientation-requested");
  for (const auto& setting : kReceiptDefaults) {
    const bool isOrientation = std::string_view(setting.name) == "orientation-requested";
    if (isOrientation && (isTurned || !type.starts_with("image/"))) continue;
    if (!hasOption(options, setting.name)) options.emplace_back(setting.name, setting.value);
  }
}

std::string firstRendererError(const std::string& log) {
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    if (isRendererError(line)) return std::string(textOfError(line));
  }
  return {};
}

void renderDocument(const RenderRequest& request, const std::string& rasterPath,
                    const std::string& logPath) {
  const FileDescriptor raster = createFile(rasterPath);
  const FileDescriptor log = createFile(logPath);
  const int status = runChild(commandFor(request), raster.get(), log.get());
  if (status == kNotStarted && findProgram("cupsfilter").empty()) {
    throw Failure(kSetup, "cupsfilter is missing; install it with: sudo apt install cups");
  }
  if (request.type == "application/pdf" && findProgram("gs").empty()) {
    throw Failure(kSetup, "Ghostscript is missing; install it with: sudo apt install ghostscript");
  }
  if (status == 0) return;
  failIfFull(rasterPath);
  failToRender(request, readWholeFile(logPath));
}

}  // namespace wren::cli
