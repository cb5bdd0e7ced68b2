// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Keeps printers, defaults and jobs on disk, so that a process that is killed at any moment
// prints no job twice and loses none that waits. PAPPL alone saves when a client connects, and
// in place: the file of a killed process may be cut off, or call a printed job unfinished.

#pragma once

#include <pappl/pappl.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "app/begun_jobs.h"

namespace wren::app {

class StateKeeper {
 public:
  /// @param folder exists and belongs to this process alone. Its files: `state`,
  ///        `messages` and `begun/`.
  explicit StateKeeper(const std::string& folder);
  StateKeeper(const StateKeeper&) = delete;
  StateKeeper& operator=(const StateKeeper&) = delete;
  ~StateKeeper();

  /// Loads what an earlier process saved, tells clients which of its jobs were interrupted, and
  /// saves every change from now on. The waiting jobs print once the system runs.
  /// @param system outlives this object, or is deleted by papplSystemDelete, which stops it.
  void start(pappl_system_t* system);

  /// Saves soon; for the event callback of the system, which holds locks of PAPPL.
  void noteChange();

  /// Saves nothing more.
  void stop();

  /// Notes that the job is about to send its first byte. A job whose document is on disk could
  /// print again, so its note also survives a power failure.
  /// @return false if that cannot be noted.
  bool begin(pappl_job_t* job);

  /// @return false if the state cannot be written; the file is then as it was.
  bool save();

 private:
  void load();
  bool write();
  void waitForSave();
  void watch();
  void resumeWaiting();
  void endIfNothingPrints();
  std::string activeJobs() const;
  static bool onSave(pappl_system_t* system, void* keeper);

  std::string file_;
  std::string messages_;
  BegunJobs begun_;
  std::vector<JobKey> waiting_;
  int looksAtArrivals_ = 0;
  pappl_system_t* system_ = nullptr;
  std::mutex saving_;
  std::mutex mutex_;  // guards what follows
  std::condition_variable wake_;
  unsigned long changes_ = 1;
  unsigned long savedChanges_ = 0;
  unsigned long triedChanges_ = 0;  // as above, also if that failed
  std::condition_variable tried_;
  bool stopping_ = false;
  std::thread watcher_;
};

}  // namespace wren::app
