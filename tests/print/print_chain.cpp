// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/print/print_chain.h"

#include <stdlib.h>

#include <array>
#include <cstdio>

#include "tests/print/job_files.h"
#include "tests/support/filter_job.h"

namespace print_chain {

namespace fs = std::filesystem;

std::string outputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {};
  std::string text;
  std::array<char, 4096> part;
  while (const auto count = fread(part.data(), 1, part.size(), pipe))
    text.append(part.data(), count);
  return pclose(pipe) == 0 ? text : std::string();
}

void PrintChain::SetUp() {
  std::string pattern = fs::temp_directory_path() / "wren-print-test.XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  folder_ = pattern;
}

void PrintChain::TearDown() {
  fs::remove_all(folder_);
}

Printed PrintChain::print(const std::string& document, int paper, const Options& jobOptions,
                          int copies) {
  const std::string ppd = WREN_PPD_DIR "/wren" + std::to_string(paper) + ".ppd";
  std::string command = WREN_PROGRAM " print --paper " + std::to_string(paper) + " --copies " +
                        std::to_string(copies) + " --out " + pathOf("out.prn") + " --raster " +
                        pathOf("in.ras") + " --images " + pathOf("images");
  for (const auto& [name, value] : jobOptions) {
    command += " -o " + name + (value.empty() ? "" : "=" + value);
  }
  command += " " + (fs::path(WREN_SOURCE_DIR "/examples") / document).string() + " >/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  Printed printed{job_files::bytesOfFile(pathOf("out.prn")),
                  job_files::rasterPages(pathOf("in.ras")), job_files::ppdOptions(ppd)};
  printed.options.job = jobOptions;
  return printed;
}

std::string PrintChain::unpackStored(const std::string& name) {
  const std::string command =
      "gzip -dc " WREN_SOURCE_DIR "/tests/print/rasters/" + name + ".ras.gz >" + pathOf(name);
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return pathOf(name);
}

std::vector<reference::Page> PrintChain::storedPages(const std::string& name) {
  return job_files::rasterPages(unpackStored(name));
}

Printed PrintChain::printStored(const std::string& name, int paper, const Options& jobOptions) {
  wren_test::FilterJob job;
  job.ppdPath = WREN_PPD_DIR "/wren" + std::to_string(paper) + ".ppd";
  job.raster = wren_test::readFile(unpackStored(name));
  for (const auto& [option, value] : jobOptions) job.options += option + "=" + value + " ";
  const auto result = wren_test::runFilterJob(job);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  Printed printed{{result.out.begin(), result.out.end()},
                  job_files::rasterPages(pathOf(name)),
                  job_files::ppdOptions(job.ppdPath)};
  printed.options.job = jobOptions;
  return printed;
}

}  // namespace print_chain
