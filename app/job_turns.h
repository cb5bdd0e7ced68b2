// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whose turn it is at each printer: one job at a time, the oldest first. PAPPL starts a job
// without taking the printer for it, so two that begin at the same moment would write to one
// device. Knows nothing of PAPPL.

#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>

#include "app/begun_jobs.h"

namespace wren::app {

/// Safe to use from several threads. The number of a job is its place in the line.
class JobTurns {
 public:
  using Question = std::function<bool()>;

  /// More jobs than this do not wait for one printer: each keeps its client and a thread.
  static constexpr std::size_t kMostWaiting = 16;

  /// Takes the printer for a job, without waiting.
  /// @return false if another job has it or an older one waits for it.
  bool take(const JobKey& job);

  /// Waits until the job can take the printer, and takes it.
  /// @param isFirst whether nothing that this object does not know of comes before the job; asked
  ///        again and again, as is `goesOn`.
  /// @return false if `goesOn` said no, if too many wait, or after `close`.
  bool wait(const JobKey& job, const Question& isFirst, const Question& goesOn);

  /// Gives the printer back, then does what the next job needs to start.
  /// @param startNext is not called after `close`.
  void give(int printerId, const std::function<void()>& startNext);

  /// From now on nobody takes a printer. Returns when no `wait` and no `startNext` runs any more.
  void close();
  bool isClosed();

 private:
  struct Line {
    bool taken = false;
    std::set<int> waiting;  // numbers of jobs
  };

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<int, Line> lines_;
  bool closed_ = false;
  int inside_ = 0;  // calls that use what is gone after `close`
};

}  // namespace wren::app
