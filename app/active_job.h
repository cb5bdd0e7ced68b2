// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job of PAPPL while it prints: its settings, its device as a stream, its pages through the
// core, and what the client is told of it.

#pragma once

#include <pappl/pappl.h>

#include <memory>
#include <optional>
#include <string>

#include "app/client_origin.h"
#include "app/document_error.h"
#include "app/kept_papers.h"
#include "app/page_keeper.h"
#include "app/page_target.h"
#include "app/print_job.h"
#include "app/state_keeper.h"
#include "common/cancel_check.h"
#include "common/handles.h"

namespace wren::app {

class ReadyCommands;
class ReadyDocuments;

/// What the jobs of a process share; outlives them. Null members are left out.
struct JobServices {
  PageKeeper* keeper = nullptr;
  StateKeeper* state = nullptr;
  const JobOrigins* origins = nullptr;  ///< null: every client is local
  const ReadyCommands* commands = nullptr;
  const ReadyDocuments* documents = nullptr;
  KeptPapers* papers = nullptr;
};

class ActiveJob {
 public:
  /// @param ofDocument attributes that the document names itself; they beat those of the job.
  /// Tells the client why the job is refused and returns null if one of its attributes is bad or
  /// its device cannot be written.
  static std::unique_ptr<ActiveJob> start(pappl_job_t* job, const pappl_pr_options_t& options,
                                          pappl_device_t* device, const JobServices& services,
                                          const JobRequest::Lookup& ofDocument = {});

  PrintJob& pages() { return *print_; }
  const PageTarget& target() const { return plan_.target; }
  const JobSettings& settings() const { return plan_.settings; }
  CancelCheck cancel() const;

  /// Marks the job as failed: it ends like a cancelled one, and the client is told why.
  void fail(DocumentError::Kind kind, const std::string& reason);

  /// Prints what is left and the end of the job.
  /// @return whether the whole job was written.
  bool finish();

 private:
  ActiveJob(pappl_job_t* job, pappl_device_t* device, const JobServices& services);

  bool begin(const pappl_pr_options_t& options, const JobRequest::Lookup& ofDocument);

  pappl_job_t* job_;
  pappl_device_t* device_;
  JobServices services_;
  PrintJob::Plan plan_;
  PaperRecord record_;
  FilePtr stream_;
  std::unique_ptr<PrintJob> print_;
  bool failed_ = false;
};

/// What the document, the job and its printer set. Tells the client what is wrong and returns
/// nothing if an attribute of the job is bad.
std::optional<JobSettings> settingsOf(pappl_job_t* job, const pappl_pr_options_t& options,
                                      const JobServices& services,
                                      const JobRequest::Lookup& ofDocument = {});

/// Notes, on disk, that the job is about to send its first byte.
void noteBegin(pappl_job_t* job, const JobServices& services);

/// Ends a job before its first byte: state "aborted", with a reason for people.
void refuseJob(pappl_job_t* job, pappl_jreason_t reason, const std::string& text);

}  // namespace wren::app
