// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/filter_job.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace wren_test {

namespace {

namespace fs = std::filesystem;

constexpr char kRelocatedSpoolFolder[] = "spool/";

std::vector<std::string> argumentsOf(const FilterJob& job, const std::string& inputFile) {
  if (!job.arguments.empty()) return job.arguments;
  std::vector<std::string> arguments = {"queue", "1", "user", "title", "1", job.options};
  if (!inputFile.empty()) arguments.push_back(inputFile);
  return arguments;
}

ProcessSpec specOf(const FilterJob& job, const TemporaryFolder& folder) {
  ProcessSpec spec;
  spec.program = filterProgram();
  spec.workingFolder = folder.path();
  spec.timeoutSeconds = job.timeoutSeconds;
  std::string inputFile = job.inputPath;
  if (job.via != RasterVia::kPipe) spec.inputPath = folder.write("page.ras", job.raster);
  if (job.via == RasterVia::kFile && inputFile.empty()) {
    inputFile = spec.inputPath;
    spec.inputPath = "/dev/null";
  }
  spec.arguments = argumentsOf(job, inputFile);
  spec.environment = job.environment;
  const std::string ppd =
      job.ppdPath.empty() ? folder.write("printer.ppd", job.ppd).string() : job.ppdPath;
  if (ppd != "-") spec.environment.push_back("PPD=" + ppd);
  const std::string privateFolder = folder.path();
  // Captures no more than it needs: a copy of the raster would count as memory of the filter.
  spec.beforeExec = [privateFolder, spool = job.spool, then = job.beforeExec] {
    enterPrivateSpool(privateFolder, spool);
    if (then != nullptr) then();
  };
  return spec;
}

void createFolders(const FilterJob& job, const TemporaryFolder& folder) {
  if (canMount() || job.spool != SpoolKind::kMissing) {
    fs::create_directory(folder.path() / "spool");
  }
  if (job.prepareFolder != nullptr) job.prepareFolder(folder);
}

std::string withRealSpoolFolder(std::string text) {
  if (canMount()) return text;
  const std::string from = std::string("the file ") + kRelocatedSpoolFolder;
  const std::string to = std::string("the file ") + kRealSpoolFolder;
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

RunningFilter::RunningFilter(const FilterJob& job) {
  createFolders(job, privateFolder_);
  running_ = std::make_unique<Process>(specOf(job, privateFolder_));
}

FilterResult RunningFilter::finish() {
  FilterResult result;
  static_cast<ProcessResult&>(result) = running_->finish();
  result.err = withRealSpoolFolder(result.err);
  result.images = savedImages(privateFolder_.path() / "spool");
  return result;
}

FilterResult runFilterJob(const FilterJob& job) {
  RunningFilter filter(job);
  if (job.via == RasterVia::kPipe) filter.process().feed(job.raster);
  return filter.finish();
}

std::vector<SavedImage> savedImages(const fs::path& folder) {
  static const std::regex name("([a-z]+)_[0-9]+-[0-9]+-[0-9]+_[0-9]+_[0-9]+_[0-9]+_([0-9]+)\\.bmp");
  std::vector<SavedImage> images;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder, none)) {
    const std::string file = entry.path().filename();
    std::smatch parts;
    if (!std::regex_match(file, parts, name) || !entry.is_regular_file()) continue;
    images.push_back({file, parts[1], std::stol(parts[2]), readFile(entry.path())});
  }
  std::sort(images.begin(), images.end(),
            [](const SavedImage& a, const SavedImage& b) { return a.number < b.number; });
  return images;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> messageLines(const std::string& err) {
  static const std::regex failed("^fopen\\(\\) failed\\..*");
  static const std::regex sideFile("^(DEBUG:outFile cups\\.out : ).*");
  static const std::regex page("^(DEBUG:printImage: p\\()[0-9]+(\\).*)");
  std::vector<std::string> lines = linesOf(err);
  for (auto& line : lines) {
    line = std::regex_replace(line, failed, "fopen() failed.");
    line = std::regex_replace(line, sideFile, "$1ADDRESS");
    line = std::regex_replace(line, page, "$1ADDRESS$2");
  }
  return lines;
}

}  // namespace wren_test
