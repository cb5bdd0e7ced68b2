// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Whether a job came from this machine, and the language of its client. PAPPL does not tell its
// callbacks who the client is.

#pragma once

#include <pappl/pappl.h>

#include <map>
#include <mutex>

#include "app/begun_jobs.h"
#include "app/text_language.h"

namespace wren::app {

/// Whether the client whose request this thread read last is on this machine; true for a thread
/// that has read none. Where a program cannot replace a function of a library that it is linked
/// with, every client counts as far away.
bool currentClientIsLocal();

/// The language of that request.
TextLanguage currentClientLanguage();

/// Remembers where jobs came from. Safe to use from several threads.
class JobOrigins {
 public:
  /// @param isShared whether clients on other machines can reach the server.
  explicit JobOrigins(bool isShared) : isShared_(isShared) {}

  /// Notes a new job and forgets one that has ended; for the event callback of the system.
  /// @param job null: nothing is noted.
  void note(pappl_job_t* job, pappl_event_t event);

  /// A job of an earlier process counts as far away if the server is shared now.
  bool isLocal(pappl_job_t* job) const;

  /// A job of an earlier process has none.
  TextLanguage languageOf(pappl_job_t* job) const;

 private:
  struct Origin {
    bool isLocal = false;
    TextLanguage language = TextLanguage::kAny;
  };

  bool isShared_;
  mutable std::mutex mutex_;
  std::map<JobKey, Origin> origins_;
};

}  // namespace wren::app
