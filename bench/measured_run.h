// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs one program at a time and measures its CPU time and memory. All runs share a private mount
// namespace with an empty tmpfs on /var/spool: debug images cost every program the same and leave
// nothing behind. Where mounts are refused, other builds of the programs write to a temporary
// folder. Linux only.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wren::bench {

/// What one run of a program used and wrote.
struct Usage {
  double cpuMs = 0;         ///< user and system time, milliseconds
  double wallMs = 0;        ///< from its start to its end, milliseconds
  double peakMiB = 0;       ///< largest resident set, MiB
  long long outBytes = 0;   ///< bytes on standard output
  long long fileBytes = 0;  ///< bytes of all files in the spool's temporary folder
  int status = 0;           ///< exit status, or 128 + the signal that ended it
  std::uint64_t hash = 0;   ///< of the output and all files, in any order; 0 unless asked for
};

/// The command line of a CUPS filter, and its PPD.
struct Command {
  std::string program;
  std::string firstArgument;  ///< before those of a filter; empty for none
  std::string ppd;
  std::string options;  ///< the job options, argument 5 of a CUPS filter
  std::string raster;   ///< the input file, argument 6
};

enum class Hash { kNone, kTake };

/// Moves this process into a mount namespace of its own, with an empty tmpfs on /var/spool that
/// holds cups/tmp/.
/// @return an empty text, or what went wrong.
std::string enterPrivateSpool();

/// The fallback: a new working folder with a folder `spool` for the images of these builds, in
/// /dev/shm if possible. Removed by the destructor. The constructor throws std::runtime_error when
/// the folder cannot be created.
class SpoolBelow {
 public:
  SpoolBelow();
  ~SpoolBelow();
  SpoolBelow(const SpoolBelow&) = delete;
  SpoolBelow& operator=(const SpoolBelow&) = delete;

  const std::string& folder() const { return folder_; }

 private:
  std::string folder_;
};

/// Runs `command` to its end, with standard output in a file of the spool and standard error in
/// /dev/null, then deletes what it wrote. Call enterPrivateSpool or create a SpoolBelow first.
Usage measure(const Command& command, Hash hash = Hash::kNone);

/// The middle value, or the mean of the middle two. `values` must not be empty.
double median(std::vector<double> values);

}  // namespace wren::bench
