// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A golden job as a text file: options and pages on one side, everything that
// the filter must write on the other. README.md describes the format.

#ifndef WREN_TESTS_GOLDEN_GOLDEN_JOB_H_
#define WREN_TESTS_GOLDEN_GOLDEN_JOB_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/job.h"

namespace golden {

using Bytes = std::vector<uint8_t>;
using Pair = std::pair<std::string, std::string>;

/// One page of a job before its pixels are made.
struct PageInput {
  uint32_t width = 1;
  uint32_t height = 1;
  uint32_t resolution = 203;
  uint32_t copies = 1;
  uint32_t bits = 8;       // bits per pixel
  bool truncated = false;  // the raster ends in the middle of the pixels
  std::string pixels = "flat:0";

  uint32_t bytesPerLine() const { return (width * bits + 7) / 8; }
};

struct JobInput {
  std::string name;  // of the file, without its ending
  std::string description;
  std::string maxMediaWidth;       // empty: the printer lacks the attribute
  std::vector<Pair> defaults;      // choices that the printer's description makes its defaults
  std::vector<std::string> lacks;  // options that the printer lacks
  std::vector<Pair> options;       // the job's options
  std::vector<PageInput> pages;
};

struct ExpectedDump {
  std::string kind;
  size_t size = 0;
  uint64_t hash = 0;
};

struct GoldenJob {
  JobInput input;
  Bytes output;                  // standard output
  std::vector<std::string> log;  // standard error, as in reference::JobResult
  int status = 1;
  std::vector<ExpectedDump> dumps;
};

/// FNV-1a of 64 bits (Fowler, Noll, Vo).
uint64_t fnv1a64(const Bytes& bytes);

/// The printer of all golden jobs, changed as the job says.
reference::JobOptions optionsOf(const JobInput& input);

/// The job's pages with their pixels; PGM files are taken from `folder`.
std::vector<reference::Page> pagesOf(const JobInput& input, const std::string& folder);

/// The job's options as one text, the way that a filter is given them.
std::string optionText(const JobInput& input);

/// The text of a golden file.
std::string formatJob(const JobInput& input, const reference::JobResult& result);

/// Reads a golden file's text. Throws std::runtime_error with the number of a line that is wrong.
GoldenJob parseJob(const std::string& name, const std::string& text);

/// The bytes as text: two digits each, XX*N for a run of four or more, lines of at most 32 items.
/// The first `head` bytes are never part of a run.
std::string hexText(const Bytes& bytes, size_t head = 0);

}  // namespace golden

#endif  // WREN_TESTS_GOLDEN_GOLDEN_JOB_H_
