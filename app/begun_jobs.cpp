// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/begun_jobs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "common/handles.h"
#include "common/private_file.h"

namespace wren::app {
namespace {

std::string nameOf(int printerId, int jobId) {
  return "printer-" + std::to_string(printerId) + "-job-" + std::to_string(jobId);
}

}  // namespace

BegunJobs::BegunJobs(std::string folder) : folder_(std::move(folder)) {
  if (folder_.empty()) return;
  ::mkdir(folder_.c_str(), S_IRWXU);
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, ignored)) {
    interrupted_.insert(entry.path().filename());
  }
}

std::string BegunJobs::pathOf(int printerId, int jobId) const {
  return folder_ + "/" + nameOf(printerId, jobId);
}

bool BegunJobs::wasInterrupted(int printerId, int jobId) const {
  return interrupted_.contains(nameOf(printerId, jobId));
}

// The folder is synced too: without its entry the file is lost with the power.
bool BegunJobs::begin(int printerId, int jobId) const {
  if (folder_.empty()) return true;
  const FileDescriptor file = openPrivateFile(pathOf(printerId, jobId).c_str());
  const FileDescriptor folder(::open(folder_.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
  return file && folder && ::fsync(folder.get()) == 0;
}

void BegunJobs::end(int printerId, int jobId) const {
  if (!folder_.empty()) ::unlink(pathOf(printerId, jobId).c_str());
}

}  // namespace wren::app
