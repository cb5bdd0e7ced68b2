// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reference implementation of a job: standard output, log lines, exit status and debug images of
// the filter for given options and pages.

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/page.h"

namespace reference {

/// An option of the PPD.
struct PpdOption {
  std::string keyword;
  std::vector<std::string> choices;
  std::string defaultChoice;
};

/// The options of a PPD and of a job, as text.
struct JobOptions {
  std::vector<PpdOption> ppd;
  /// Value of the attribute `MaxMediaWidth`; empty when the PPD lacks it.
  std::string maxMediaWidth;
  /// Keyword and value of each job option, compared without regard to case. A value that is not a
  /// choice of its option is ignored.
  std::vector<std::pair<std::string, std::string>> job;
};

/// The settings of a job. -1: the PPD lacks the option.
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

/// One page of the raster: the header fields that are read, and the pixels.
struct Page {
  std::uint32_t bitsPerPixel = 8;
  std::uint32_t bytesPerLine = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t hwResolutionX = 203;
  std::uint32_t numCopies = 1;
  bool readable = true;  // false: the stream ends before the last pixel
  Bytes pixels;          // bytesPerLine x height
};

struct JobResult {
  std::vector<Command> commands;  // standard output
  /// Lines on standard error, without their newlines. An address is written as ADDRESS,
  /// "fopen() failed." has no text of strerror, and "ERROR:*" stands for any line that begins with
  /// `ERROR:`.
  std::vector<std::string> log;
  int status = 1;
  std::vector<Dump> dumps;  // the index is the number in the file name
};

/// The marked choice; null when the option is missing or its default is not one of its choices.
const std::string* chosen(const JobOptions& options, const std::string& keyword);

/// The number of a halftone name; 0 for an unknown name.
int wrenHalftoneTypeFromStr(const std::string& name);

/// Width and height in millimetres of a name such as `X72D5MMY200MM`; false when it has none.
bool parsePageSize(const std::string& name, float& width, float& height);

/// Reads the settings and appends the lines that this logs.
JobSettings readSettings(const JobOptions& options, std::vector<std::string>& log);

// The control commands around a job and its pages; one that is switched off is left out.
std::vector<Command> jobSetup(JobSettings s);
std::vector<Command> pageSetup(JobSettings s);
std::vector<Command> endPage(JobSettings s);
std::vector<Command> endJob(JobSettings s);

/// The job after its settings were read; `log` holds the lines so far.
JobResult runJob(const JobSettings& settings, const std::vector<Page>& pages,
                 std::vector<std::string> log = {});

/// The whole job.
JobResult runJob(const JobOptions& options, const std::vector<Page>& pages);

}  // namespace reference
