// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The bytes of the last jobs of each printer, on disk, for the web page that shows them as paper.
// Receipts are private: nothing is kept unless the printer says how many, and the files are for
// their owner alone.

#pragma once

#include <pappl/pappl.h>

#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "app/begun_jobs.h"
#include "app/job_settings.h"

namespace wren::app {

struct KeptPaper {
  JobKey job;
  std::string name;
  std::string user;
  std::time_t printedAt = 0;
  std::map<std::string, std::int32_t> settings;  ///< by attribute, and "brightness"
};

/// Safe to use from several threads.
class KeptPapers {
 public:
  /// @param folder is created when the first paper is kept.
  explicit KeptPapers(std::string folder) : folder_(std::move(folder)) {}

  /// Keeps the newest `most` papers of the printer, this one among them.
  void keep(const KeptPaper& paper, const std::string& bytes, std::size_t most);

  /// The papers of a printer, newest first.
  std::vector<KeptPaper> list(int printerId) const;
  std::optional<std::string> bytesOf(const JobKey& job) const;

  /// Removes all but the newest `most` papers of a printer.
  void prune(int printerId, std::size_t most);

  /// The printers that have papers.
  std::vector<int> printers() const;

 private:
  std::string pathOf(const JobKey& job, const char* suffix) const;
  std::vector<JobKey> jobs() const;
  void remove(const JobKey& job) const;

  std::string folder_;
  mutable std::mutex mutex_;
};

/// What one job sends, if its printer keeps papers.
class PaperRecord {
 public:
  /// Both outlive this object.
  /// @param papers null: nothing is kept.
  PaperRecord(pappl_job_t* job, KeptPapers* papers);

  /// Takes the bytes as they are sent; null if nothing is kept.
  std::string* bytes() { return most_ == 0 ? nullptr : &bytes_; }

  /// Keeps what was sent; to be called once, when the job has ended.
  void finish(const JobSettings& settings);

 private:
  pappl_job_t* job_;
  KeptPapers* papers_;
  std::size_t most_ = 0;
  std::string bytes_;
};

/// How many papers the printer keeps.
std::size_t keptPapersOf(pappl_printer_t* printer);

/// Removes, from now on and soon after each change, what the printers no longer keep, and what
/// printers that are gone have left.
/// @param papers outlives the system.
void watchKeptPapers(pappl_system_t* system, KeptPapers& papers);

}  // namespace wren::app
