// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/begun_jobs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "common/handles.h"
#include "common/private_file.h"

namespace wren::app {

BegunJobs::BegunJobs(std::string folder) : folder_(std::move(folder)) {
  if (!folder_.empty()) ::mkdir(folder_.c_str(), S_IRWXU);
}

std::string BegunJobs::pathOf(const JobKey& job) const {
  return folder_ + "/printer-" + std::to_string(job.printerId) + "-job-" +
         std::to_string(job.jobId);
}

// The folder is synced too: without its entry the file is lost with the power.
bool BegunJobs::begin(const BegunJob& job, Kept kept) const {
  if (folder_.empty()) return true;
  const FileDescriptor file = openPrivateFile(pathOf(job.key).c_str());
  if (!file) return false;
  const auto size = static_cast<ssize_t>(job.line.size());
  // A part of a line would tell clients something wrong.
  if (::write(file.get(), job.line.data(), job.line.size()) != size) {
    [[maybe_unused]] const int ignored = ::ftruncate(file.get(), 0);
  }
  if (kept == Kept::kOfProcess) return true;
  const FileDescriptor folder(::open(folder_.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
  return folder && ::fsync(folder.get()) == 0;
}

void BegunJobs::forget(const JobKey& job) const {
  if (!folder_.empty()) ::unlink(pathOf(job).c_str());
}

std::vector<JobKey> BegunJobs::all() const {
  std::vector<JobKey> jobs;
  if (folder_.empty()) return jobs;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, ignored)) {
    JobKey job;
    // NOLINTNEXTLINE(cert-err34-c): the files are our own
    if (std::sscanf(entry.path().filename().c_str(), "printer-%d-job-%d", &job.printerId,
                    &job.jobId) == 2) {
      jobs.push_back(job);
    }
  }
  std::sort(jobs.begin(), jobs.end());
  return jobs;
}

std::vector<BegunJob> BegunJobs::allWithLines() const {
  std::vector<BegunJob> jobs;
  for (const JobKey& key : all()) {
    BegunJob job = {key, {}};
    std::ifstream file(pathOf(key));
    std::getline(file, job.line);
    jobs.push_back(std::move(job));
  }
  return jobs;
}

}  // namespace wren::app
