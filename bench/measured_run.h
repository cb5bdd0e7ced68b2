// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs one program at a time and measures what it used. All runs happen in a
// mount namespace of their own in which /var/spool is an empty tmpfs, so that
// the images written for every page cost every program the same and leave
// nothing behind. Where nothing may be mounted, twins of the programs do the same
// in a folder of the run. Linux only.
#pragma once

#include <string>
#include <vector>

namespace bench {

/// What one run of a program used and left.
struct Usage {
  double cpuMs = 0;         ///< user and system time, milliseconds
  double peakMiB = 0;       ///< largest resident set, MiB
  long long outBytes = 0;   ///< bytes on standard output
  long long fileBytes = 0;  ///< bytes of all files in the spool's temporary folder
  int status = 0;           ///< exit status, or 128 + the signal that ended it
};

/// A command line with the PPD that the program is given.
struct Command {
  std::string program;
  std::string ppd;
  std::string options;  ///< the job options, argument 5 of a CUPS filter
  std::string raster;   ///< the input file, argument 6
};

/// Moves this process into its own mount namespace with an empty tmpfs on
/// /var/spool that holds cups/tmp/. Returns an empty text or what went wrong.
std::string enterPrivateSpool();

/// Instead of the namespace: a new folder that becomes the working folder, with "spool" in it for
/// the twins of the programs that write their images there. It lies in /dev/shm if it can. Throws
/// std::runtime_error when it cannot be made; removed with the object.
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

/// Runs `command` with standard output in a file of the spool and messages
/// thrown away, waits for it, and empties the folder again.
Usage measure(const Command& command);

/// The middle value (the mean of the middle two); `values` must not be empty.
double median(std::vector<double> values);

}  // namespace bench
