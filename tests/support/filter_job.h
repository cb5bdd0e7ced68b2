// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs the real filter on a job, as the print system would, and collects its printer
// bytes, messages, exit status and debug images.
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
  std::string ppdPath;                                ///< instead of the text: the value of PPD
  std::string inputPath;               ///< instead of the raster: the seventh argument
  std::vector<std::string> arguments;  ///< instead of all arguments, argv[0] included
  std::function<void()> beforeExec;    ///< runs in the child just before the filter
  std::function<void(const TemporaryFolder&)> prepareFolder;  ///< may fill spool/ and opt/
  double timeoutSeconds = 60.0;
};

/// A debug image as the filter left it.
struct SavedImage {
  std::string name;  ///< file name without its folder
  std::string kind;  ///< "origin" or "dithered"
  long number = 0;   ///< the dump counter in its name
  std::string bytes;
};

struct FilterResult : ProcessResult {
  std::vector<SavedImage> images;  ///< by number
};

/// A filter that is running; finish() collects everything.
class RunningFilter {
 public:
  explicit RunningFilter(const FilterJob& job);
  Process& process() { return *running; }
  const TemporaryFolder& folder() const { return privateFolder; }
  FilterResult finish();

 private:
  TemporaryFolder privateFolder;
  std::unique_ptr<Process> running;
};

/// Runs a job to its end. Messages name the real spool folder whatever folder was used.
FilterResult runFilterJob(const FilterJob& job);

/// The images of a folder, by number.
std::vector<SavedImage> savedImages(const std::filesystem::path& folder);

/// The lines of a text without their newlines.
std::vector<std::string> linesOf(const std::string& text);

/// The lines of the filter's messages with what varies made fixed: addresses read ADDRESS and
/// "fopen() failed." stands without the system's words.
std::vector<std::string> messageLines(const std::string& err);

}  // namespace wren_test
