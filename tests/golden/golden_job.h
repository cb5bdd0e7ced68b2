// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A golden job as a text file: options and pages, and everything that the filter
// must write for them. README.md describes the format.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/job.h"

namespace golden {

using Bytes = std::vector<std::uint8_t>;
using Pair = std::pair<std::string, std::string>;

/// One page of a job; `pagePixels` generates its pixels.
struct PageInput {
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  std::uint32_t resolution = 203;
  std::uint32_t copies = 1;
  std::uint32_t bits = 8;  ///< bits per pixel
  bool truncated = false;  ///< the raster ends in the middle of the pixels
  std::string pixels = "flat:0";

  std::uint32_t bytesPerLine() const { return (width * bits + 7) / 8; }
};

struct JobInput {
  std::string name;  ///< of the file, without its extension
  std::string description;
  std::string maxMediaWidth;       ///< empty: the PPD lacks the attribute
  std::vector<Pair> defaults;      ///< default choices of the PPD that differ from the standard
  std::vector<std::string> lacks;  ///< options that the PPD lacks
  std::vector<Pair> options;       ///< options of the job
  std::vector<PageInput> pages;
};

struct ExpectedDump {
  std::string kind;
  std::size_t size = 0;
  std::uint64_t hash = 0;
};

struct GoldenJob {
  JobInput input;
  Bytes output;                  ///< standard output
  std::vector<std::string> log;  ///< standard error, as in `reference::JobResult`
  int status = 1;
  std::vector<ExpectedDump> dumps;
};

/// The 64-bit FNV-1a hash (Fowler, Noll, Vo).
std::uint64_t fnv1a64(const Bytes& bytes);

/// The standard PPD of the golden jobs with the changes of this one, and the options of the job.
reference::JobOptions optionsOf(const JobInput& input);

/// The pages of the job with their pixels.
/// @param folder holds the PGM files.
std::vector<reference::Page> pagesOf(const JobInput& input, const std::string& folder);

/// The options of the job as the fifth argument of a filter.
std::string optionText(const JobInput& input);

/// The text of a golden file.
std::string formatJob(const JobInput& input, const reference::JobResult& result);

/// Parses the text of a golden file. Throws std::runtime_error with the number of a faulty line.
GoldenJob parseJob(const std::string& name, const std::string& text);

/// The bytes as text: two hexadecimal digits each, XX*N for a run of four or more, at most 32 items
/// per line. The first `head` bytes are never part of a run.
std::string hexText(const Bytes& bytes, std::size_t head = 0);

}  // namespace golden
