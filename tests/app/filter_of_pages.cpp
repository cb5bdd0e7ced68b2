// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/filter_of_pages.h"

#include <map>

#include "tests/support/filter_job.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

constexpr std::size_t kSyncBytes = 4;

// The PPDs name the method before the one that prints.
const std::map<std::string, std::string> kPpdChoices = {{"threshold", "None"},
                                                        {"ordered", "FloydSteinberg"},
                                                        {"burkes", "Ordered"},
                                                        {"stucki", "Burkes"},
                                                        {"jarvis-judice-ninke", "Stucki"},
                                                        {"sierra", "JarvisJudiceNinke"},
                                                        {"stevenson-arce", "Sierra"},
                                                        {"bayer", "StevensonArce"},
                                                        {"stencil", "QVDithering"}};

// Each file is a stream of one page: one stream is the first with the others' pages behind.
std::string joined(const std::vector<std::filesystem::path>& pages) {
  std::string stream;
  for (const auto& page : pages) {
    const std::string bytes = readFile(page);
    stream += stream.empty() ? bytes : bytes.substr(kSyncBytes);
  }
  return stream;
}

}  // namespace

std::string filterBytesOf(const std::vector<std::filesystem::path>& pages,
                          const FilterOptions& options) {
  FilterJob job;
  job.ppdPath = WREN_PPD_DIR "/wren112.ppd";
  job.options = "DebugImages=Off HalftoneType=" + kPpdChoices.at(options.halftone);
  if (!options.options.empty()) job.options += " " + options.options;
  job.raster = joined(pages);
  return runFilterJob(job).out;
}

}  // namespace wren_test
