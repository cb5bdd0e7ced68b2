// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/received_job.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "escpos/counted.h"
#include "preview/job_picture.h"

namespace wren::preview {
namespace {

std::string jobName(unsigned number) {
  char name[32];
  std::snprintf(name, sizeof name, "job-%04u.prn", number);
  return name;
}

}  // namespace

ReceivedJob::ReceivedJob(const Options& options, unsigned& number)
    : options_(options), reader_(paperLimits(options)) {
  createFile(number);
}

void ReceivedJob::createFile(unsigned& number) {
  for (;;) {
    path_ = (std::filesystem::path(options_.directory) / jobName(number)).string();
    // x: fails if the file exists, so that another program cannot get in between.
    file_.reset(std::fopen(path_.c_str(), "wbx"));
    if (file_ == nullptr && errno != EEXIST) {
      error_ = path_ + ": " + std::strerror(errno);
      return;
    }
    ++number;
    if (file_ != nullptr) return;
  }
}

void ReceivedJob::take(std::span<const std::uint8_t> bytes) {
  bytesTaken_ += bytes.size();
  if (file_ != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
    error_ = path_ + ": " + std::strerror(errno);
  }
  reader_.feed(bytes);
}

std::string ReceivedJob::progress() const {
  return path_ + ": " + std::to_string(bytesTaken_) + " bytes, " +
         lengthText(reader_.printer().paper(), options_.style.dpi) + " so far";
}

void ReceivedJob::closeFile() {
  if (file_ != nullptr && std::fclose(file_.release()) != 0 && error_.empty()) {
    error_ = path_ + ": " + std::strerror(errno);
  }
}

std::string ReceivedJob::finish(const std::string& ending) {
  closeFile();
  reader_.finish();
  printProblems(reader_.printer(), path_);
  std::string line = path_ + ": " + summary(reader_, options_.style.dpi);
  const std::uint64_t problems = reader_.printer().totals().problems;
  if (problems > 0) line += ", " + escpos::counted(problems, "problem");
  if (!ending.empty()) line += ", " + ending;
  const WrittenPictures written =
      writePictures(reader_.printer().paper(), options_, pictureName(path_));
  for (const std::string& file : written.files) line += ", " + file;
  for (const std::string& error : written.errors) line += ", " + error;
  if (!error_.empty()) line += ", " + error_;
  return line;
}

}  // namespace wren::preview
