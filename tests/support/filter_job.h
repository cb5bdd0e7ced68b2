// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs the real filter on a job, as the print system does. Collects its printer bytes,
// messages, exit status and debug images.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/spool_folder.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

enum class RasterVia { kFile, kStandardInput, kPipe };

struct FilterJob {
  std::string ppd;      ///< text of the PPD file (see ppd_text.h)
  std::string options;  ///< the filter's fifth argument
  std::string raster;   ///< bytes of the raster stream (see raster_stream.h)
  RasterVia via = RasterVia::kStandardInput;
  SpoolKind spool = SpoolKind::kPrivate;
  std::vector<std::string> environment = {"TZ=UTC"};  ///< PPD= is added
  std::string ppdPath;                 ///< value of PPD, instead of `ppd`; "-" leaves it unset
  std::string inputPath;               ///< seventh argument, instead of `raster`
  std::vector<std::string> arguments;  ///< replaces all arguments, argv[0] included
  std::function<void()> beforeExec;    ///< runs in the child before exec
  std::function<void(const TemporaryFolder&)> prepareFolder;  ///< may add files to spool/ and opt/
  double timeoutSeconds = 60.0;
};

/// A debug image that the filter wrote.
struct SavedImage {
  std::string name;  ///< file name without its folder
  std::string kind;  ///< "origin" or "dithered"
  long number = 0;   ///< the image counter in its name
  std::string bytes;
};

struct FilterResult : ProcessResult {
  std::vector<SavedImage> images;  ///< sorted by number
};

/// A running filter; `finish` waits for its end and returns the result.
class RunningFilter {
 public:
  explicit RunningFilter(const FilterJob& job);
  Process& process() { return *running_; }
  const TemporaryFolder& folder() const { return privateFolder_; }
  FilterResult finish();

 private:
  TemporaryFolder privateFolder_;
  std::unique_ptr<Process> running_;
};

/// Runs a job to its end. Messages name the real spool folder, even if another one was used.
FilterResult runFilterJob(const FilterJob& job);

/// The debug images in a folder, sorted by number.
std::vector<SavedImage> savedImages(const std::filesystem::path& folder);

/// The lines of a text without their newlines.
std::vector<std::string> linesOf(const std::string& text);

/// The lines of the messages without their variable parts: memory addresses become ADDRESS, and the
/// error text of the system after "fopen() failed." is removed.
std::vector<std::string> messageLines(const std::string& err);

}  // namespace wren_test
