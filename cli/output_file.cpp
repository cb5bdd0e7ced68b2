// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/output_file.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli/failure.h"
#include "common/handles.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

std::string resolved(const std::string& target) {
  std::error_code ignored;
  const fs::path place = fs::canonical(target, ignored);
  return ignored ? target : place.string();
}

std::string newFolder() {
  std::error_code failed;
  std::string path = (fs::temp_directory_path(failed) / "wren.XXXXXX").string();
  if (failed || mkdtemp(path.data()) == nullptr) {
    throw Failure(kFailed, "no folder for temporary files: " +
                               (failed ? failed.message() : std::strerror(errno)));
  }
  return path;
}

}  // namespace

void failToWrite(const std::string& path, int error) {
  throw Failure(kFailed, "'" + path + "' cannot be written: " + std::strerror(error));
}

OutputFile::OutputFile(std::string target)
    : target_(std::move(target)), place_(resolved(target_)), path_(place_) {
  struct stat status = {};
  const bool exists = stat(place_.c_str(), &status) == 0;
  // A name that is too long would be noticed by the renaming alone.
  if (!exists && errno != ENOENT) failToWrite(target_, errno);
  if (!exists || S_ISREG(status.st_mode)) {
    createBeside(place_);
  } else if (S_ISDIR(status.st_mode)) {
    failToWrite(target_, EISDIR);
  }
}

void OutputFile::createBeside(const std::string& place) {
  const fs::path path(place);
  // A read-only file is not replaced, although the folder would allow it.
  if (access(place.c_str(), F_OK) == 0 && access(place.c_str(), W_OK) != 0) {
    failToWrite(target_, errno);
  }
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  path_ = (folder / ".wren.XXXXXX").string();
  const FileDescriptor file(mkstemp(path_.data()));
  if (!file) {
    path_ = place_;
    failToWrite(target_, errno);
  }
  struct stat old = {};
  const mode_t mode = stat(place.c_str(), &old) == 0 ? (old.st_mode & 0777U) : modeOfNewFiles();
  fchmod(file.get(), mode);
}

OutputFile::~OutputFile() {
  if (path_ != place_) unlink(path_.c_str());
}

void OutputFile::commit() {
  if (path_ == place_) return;
  if (std::rename(path_.c_str(), place_.c_str()) != 0) failToWrite(target_, errno);
  path_ = place_;
}

TemporaryFolder::TemporaryFolder() : path_(newFolder()) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

NewFolder::NewFolder(const std::string& path) {
  std::error_code failed;
  fs::path folder = fs::path(path).lexically_normal();
  if (!folder.has_filename()) folder = folder.parent_path();  // "a/"
  while (!folder.empty() && !fs::exists(folder, failed) && !failed) {
    created_.push_back(folder.string());
    folder = folder.parent_path();
  }
  failed.clear();
  if (!path.empty()) fs::create_directories(path, failed);
  // For a file, libstdc++ reports nothing and libc++ EEXIST.
  std::error_code ignored;
  if (fs::exists(path, ignored) && !fs::is_directory(path, ignored)) {
    failed = std::make_error_code(std::errc::not_a_directory);
  }
  if (!failed) return;
  removeCreated();
  throw Failure(kFailed, "'" + path + "' cannot be created: " + failed.message());
}

NewFolder::~NewFolder() {
  removeCreated();
}

void NewFolder::removeCreated() const {
  std::error_code notEmpty;
  for (const std::string& folder : created_) fs::remove(folder, notEmpty);
}

std::string readWholeFile(const std::string& path, std::uintmax_t mostBytes) {
  const FilePtr in(std::fopen(path.c_str(), "rb"));
  std::string text;
  char part[65536];
  std::size_t count = 0;
  while (in != nullptr && (count = std::fread(part, 1, sizeof part, in.get())) > 0) {
    text.append(part, count);
    if (text.size() > mostBytes) {
      throw Failure(kDocument,
                    "'" + path + "' is longer than " + std::to_string(mostBytes) + " bytes");
    }
  }
  if (in == nullptr || std::ferror(in.get()) != 0) {
    throw Failure(kFailed, "'" + path + "' cannot be read: " + std::strerror(errno));
  }
  return text;
}

void writeWholeFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  FilePtr out(std::fopen(file.path().c_str(), "wb"));
  if (out == nullptr) failToWrite(path, errno);
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), out.get()) == bytes.size();
  const bool closed = std::fclose(out.release()) == 0;
  if (!written || !closed) failToWrite(path, errno);
  file.commit();
}

}  // namespace wren::cli
