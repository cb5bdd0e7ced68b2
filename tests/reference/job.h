// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A whole job in memory: what the filter writes to its two streams, its exit
// status and its debug images, for given options and pages.

#ifndef WREN_TESTS_REFERENCE_JOB_H_
#define WREN_TESTS_REFERENCE_JOB_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/page.h"

namespace reference {

/// An option of the printer's description file.
struct PpdOption {
  std::string keyword;
  std::vector<std::string> choices;
  std::string defaultChoice;
};

/// The choices of a printer and of a job, before they are read as numbers.
struct JobOptions {
  std::vector<PpdOption> ppd;
  /// Value of the attribute MaxMediaWidth; empty when the description lacks it.
  std::string maxMediaWidth;
  /// keyword and value of each job option; case does not count in either. A value that is no
  /// choice of its option is ignored.
  std::vector<std::pair<std::string, std::string>> job;
};

/// What the filter knows of a job. -1 stands for an option that the printer lacks.
struct JobSettings {
  float pageWidth = 0.0F;
  float pageHeight = 0.0F;
  double maxMediaWidth = 0.0;
  int pageType = -1;
  int bidiPrinting = -1;
  int pageCutType = -1;
  int docCutType = -1;
  int buzzer1Setting = -1;
  int buzzer1OnTime = -1;
  int buzzer1Repeat = -1;
  int buzzer2Setting = -1;
  int buzzer2OnTime = -1;
  int buzzer2Repeat = -1;
  int cashDrawerSetting = -1;
  int cashDrawerPulseWidth = -1;
  int feedCutAfterJobEnd = -1;
  int brightness = 0;
  int halftoneType = 0;
};

/// One page of the raster: the header fields that count, and its bytes.
struct Page {
  uint32_t bitsPerPixel = 8;
  uint32_t bytesPerLine = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t hwResolutionX = 203;
  uint32_t numCopies = 1;
  bool readable = true;  // false: the stream ends before the last pixel
  Bytes pixels;          // bytesPerLine x height
};

struct JobResult {
  std::vector<Command> commands;  // standard output
  /// Lines on standard error, without their newlines. Addresses read ADDRESS, "fopen() failed."
  /// stands without the system's words, and "ERROR:*" is a line that begins with ERROR: and whose
  /// words are free.
  std::vector<std::string> log;
  int status = 1;
  std::vector<Dump> dumps;  // their position is the number in the file name
};

/// The text of the choice in force, or null when the option is missing or its default is no choice.
const std::string* chosen(const JobOptions& options, const std::string& keyword);

/// Number of a halftone method's name; 0 for a name that is none.
int wrenHalftoneTypeFromStr(const std::string& name);

/// Width and height that a name such as X72D5MMY200MM holds; false when it holds none.
bool parsePageSize(const std::string& name, float& width, float& height);

/// Reads the settings and adds the lines that reading them logs.
JobSettings readSettings(const JobOptions& options, std::vector<std::string>& log);

// The control commands around a job and its pages. Empty commands are left out.
std::vector<Command> jobSetup(JobSettings s);
std::vector<Command> pageSetup(JobSettings s);
std::vector<Command> endPage(JobSettings s);
std::vector<Command> endJob(JobSettings s);

/// The job after its settings were read; `log` holds what was logged so far.
JobResult runJob(const JobSettings& settings, const std::vector<Page>& pages,
                 std::vector<std::string> log = {});

/// The job from its options on.
JobResult runJob(const JobOptions& options, const std::vector<Page>& pages);

}  // namespace reference

#endif  // WREN_TESTS_REFERENCE_JOB_H_
