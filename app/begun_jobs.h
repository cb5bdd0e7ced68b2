// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Which jobs have sent bytes to a printer and are not known to have ended. Kept in files, so that
// a job that was printing when the process was killed is not printed again by the next one.

#pragma once

#include <compare>
#include <string>
#include <vector>

namespace wren::app {

/// What names a job of PAPPL.
struct JobKey {
  int printerId = 0;
  int jobId = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a pointer
  auto operator<=>(const JobKey&) const = default;
};

struct BegunJob {
  JobKey key;
  std::string line;  ///< what the saved state says of it; empty if that is not known
};

class BegunJobs {
 public:
  /// @param folder is created if it is missing; empty keeps nothing.
  explicit BegunJobs(std::string folder);

  enum class Kept {
    kOfProcess,  ///< if the process is killed
    kOfMachine,  ///< if the power fails as well; waits for the disk
  };

  /// Notes that the job is about to send its first byte. Its line may be lost with the power.
  /// @return false if that cannot be noted.
  bool begin(const BegunJob& job, Kept kept) const;

  /// Forgets the job. A job that the saved state still calls unfinished must be kept: it would
  /// be printed again.
  void forget(const JobKey& job) const;

  /// In order, those of earlier processes included.
  std::vector<JobKey> all() const;
  std::vector<BegunJob> allWithLines() const;

 private:
  std::string pathOf(const JobKey& job) const;

  std::string folder_;
};

}  // namespace wren::app
