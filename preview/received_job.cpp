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

bool exists(const std::string& path) {
  // A link that leads nowhere is a file too.
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

// A picture of this stream, or the first of several.
bool hasPicture(const std::string& streamPath) {
  const std::string stem = streamPath.substr(0, streamPath.rfind('.'));
  return exists(stem + ".png") || exists(stem + "-1.png");
}

}  // namespace

ReceivedJob::ReceivedJob(const Options& options, unsigned& number)
    : options_(options), reader_(paperLimits(options)) {
  createFile(number);
}

void ReceivedJob::createFile(unsigned& number) {
  for (;; ++number) {
    path_ = (std::filesystem::path(options_.directory) / jobName(number)).string();
    if (hasPicture(path_)) continue;
    // x: fails if the file exists, so that another program cannot get in between.
    file_.reset(std::fopen(path_.c_str(), "wbx"));
    if (file_ == nullptr && errno == EEXIST) continue;
    if (file_ == nullptr) error_ = path_ + ": " + std::strerror(errno);
    if (file_ != nullptr) ++number;
    return;
  }
}

void ReceivedJob::take(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
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

void ReceivedJob::flush() {
  if (file_ != nullptr && std::fflush(file_.get()) != 0)
    error_ = path_ + ": " + std::strerror(errno);
}

void ReceivedJob::endStream() {
  if (file_ != nullptr && std::fclose(file_.release()) != 0 && error_.empty()) {
    error_ = path_ + ": " + std::strerror(errno);
  }
  reader_.finish();
}

std::string ReceivedJob::finish(const std::string& ending, CancelCheck cancel) {
  printProblems(reader_.printer(), path_);
  std::string line = path_ + ": " + summary(reader_, options_.style.dpi);
  const std::uint64_t problems = reader_.printer().totals().problems;
  if (problems > 0) line += ", " + escpos::counted(problems, "problem");
  if (!ending.empty()) line += ", " + ending;
  PictureRules rules;
  rules.keepExisting = true;
  rules.cancel = cancel;
  const WrittenPictures written =
      writePictures(reader_.printer().paper(), options_, pictureName(path_), rules);
  for (const std::string& file : written.files) line += ", " + file;
  for (const std::string& error : written.errors) line += ", " + error;
  if (!error_.empty()) line += ", " + error_;
  return line;
}

}  // namespace wren::preview
