// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Which jobs have sent bytes to a printer and not ended. Kept in files, so that a job that was
// printing when the process was killed is not printed a second time by the next one.

#pragma once

#include <set>
#include <string>

namespace wren::app {

class BegunJobs {
 public:
  /// Reads what an earlier process left.
  /// @param folder is created if it is missing; empty keeps nothing.
  explicit BegunJobs(std::string folder);

  /// Whether the job had begun when an earlier process ended.
  bool wasInterrupted(int printerId, int jobId) const;

  /// Notes, on disk, that the job is about to send its first byte.
  /// @return false if that cannot be noted.
  bool begin(int printerId, int jobId) const;

  /// Forgets the job.
  void end(int printerId, int jobId) const;

 private:
  std::string pathOf(int printerId, int jobId) const;

  std::string folder_;
  std::set<std::string> interrupted_;
};

}  // namespace wren::app
