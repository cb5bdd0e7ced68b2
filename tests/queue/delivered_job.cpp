// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/queue/delivered_job.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/print/job_files.h"

namespace fs = std::filesystem;

TestBench* bench = nullptr;

namespace {

std::string textOfFile(const std::string& path) {
  const Bytes bytes = job_files::bytesOfFile(path);
  return {bytes.begin(), bytes.end()};
}

// The job options can contain any characters, so the shell reads them from a file.
FilterRun readRun(const std::string& work, const std::string& folder) {
  const std::string command = "PPD=" + folder + "/ppd " + work +
                              "/bin/direct_run 1 user title \"$(cat " + folder +
                              "/copies)\" \"$(cat " + folder + "/options)\" < " + folder +
                              "/raster > " + folder + "/direct.prn 2>/dev/null";
  run(command);
  return {job_files::rasterPages(folder + "/raster"), textOfFile(folder + "/copies"),
          textOfFile(folder + "/options"), job_files::bytesOfFile(folder + "/direct.prn")};
}

}  // namespace

int TestBench::submit(const std::string& queue, const std::string& options,
                      const std::string& files) const {
  const std::string answer = outputOf("cd " + scheduler.work() + "/documents && lp -d " + queue +
                                      " " + options + " -- " + files);
  const auto dash = answer.find(queue + "-");
  return dash == std::string::npos ? 0 : std::atoi(answer.c_str() + dash + queue.size() + 1);
}

ipp_jstate_t TestBench::stateOf(int job) const {
  cups_job_t* jobs = nullptr;
  const int count = cupsGetJobs2(CUPS_HTTP_DEFAULT, &jobs, nullptr, 0, CUPS_WHICHJOBS_ALL);
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  for (int i = 0; i < count; ++i) {
    if (jobs[i].id == job) state = jobs[i].state;
  }
  cupsFreeJobs(count, jobs);
  return state;
}

ipp_jstate_t TestBench::waitForEnd(int job) const {
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  for (int i = 0; i < 1500 && state < IPP_JSTATE_STOPPED; ++i) {
    usleep(20'000);
    state = stateOf(job);
  }
  return state;
}

DeliveredJob TestBench::print(const std::string& queue, const std::string& options,
                              const std::string& files) {
  takeRuns();
  DeliveredJob delivered;
  delivered.state = waitForEnd(submit(queue, options, files));
  delivered.received = takeReceived();
  delivered.runs = takeRuns();
  return delivered;
}

Bytes TestBench::takeReceived() {
  const auto connections = printer.take(1);
  return connections.size() == 1 ? connections[0].bytes : Bytes();
}

std::vector<FilterRun> TestBench::takeRuns() const {
  std::vector<std::string> folders;
  for (const auto& entry : fs::directory_iterator(scheduler.work() + "/runs")) {
    folders.push_back(entry.path());
  }
  std::sort(folders.begin(), folders.end());
  std::vector<FilterRun> runs;
  for (const auto& folder : folders) {
    runs.push_back(readRun(scheduler.work(), folder));
    fs::remove_all(folder);
  }
  return runs;
}
