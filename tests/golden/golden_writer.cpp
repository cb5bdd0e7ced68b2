// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// golden_writer JOBS_FOLDER PAGES_FOLDER: writes the golden files. The expected
// output comes from the reference implementation in tests/reference only.

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/golden/golden_job.h"
#include "tests/golden/job_list.h"
#include "tests/reference/job.h"

namespace {

void writeJobs(const std::string& jobsFolder, const std::string& pagesFolder) {
  for (const golden::JobInput& input : golden::jobList()) {
    const auto result =
        reference::runJob(golden::optionsOf(input), golden::pagesOf(input, pagesFolder));
    std::ofstream file(jobsFolder + "/" + input.name + ".job");
    file << golden::formatJob(input, result);
    if (!file.flush()) throw std::runtime_error("cannot write " + input.name);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: golden_writer JOBS_FOLDER PAGES_FOLDER\n");
    return 2;
  }
  try {
    writeJobs(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "golden_writer: %s\n", error.what());
    return 1;
  }
  return 0;
}
