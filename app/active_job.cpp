// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/active_job.h"

#include <algorithm>

#include "app/device_stream.h"
#include "app/each_job.h"
#include "app/job_attributes.h"
#include "app/network_device.h"
#include "app/paper.h"

namespace wren::app {
namespace {

bool isCancelled(const void* job) {
  // The function only reads, but its type is that of all others.
  return papplJobIsCanceled(static_cast<pappl_job_t*>(const_cast<void*>(job)));
}

pappl_jreason_t reasonOf(DocumentError::Kind kind) {
  switch (kind) {
    case DocumentError::Kind::kFormat:
      return PAPPL_JREASON_DOCUMENT_FORMAT_ERROR;
    case DocumentError::Kind::kPassword:
      return PAPPL_JREASON_DOCUMENT_PASSWORD_ERROR;
    case DocumentError::Kind::kUnprintable:
      return PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR;
    case DocumentError::Kind::kSystem:
      break;
  }
  return PAPPL_JREASON_ABORTED_BY_SYSTEM;
}

PageTarget targetOf(pappl_job_t* job, const pappl_pr_options_t& options) {
  PageTarget target;
  const char* driver = papplPrinterGetDriverName(papplJobGetPrinter(job));
  if (const Paper* paper = findPaper(driver == nullptr ? "" : driver)) {
    target.headWidthPx = paper->headWidthPx;
    target.paperWidthPx = paperWidthPx(*paper);
  }
  target.fitWidePages = options.print_scaling != PAPPL_SCALING_NONE;
  return target;
}

}  // namespace

void refuseJob(pappl_job_t* job, pappl_jreason_t reason, const std::string& text) {
  papplJobSetMessage(job, "%s", text.c_str());
  papplJobSetReasons(job, reason | PAPPL_JREASON_ERRORS_DETECTED, PAPPL_JREASON_NONE);
  papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s", text.c_str());
}

std::optional<JobSettings> settingsOf(pappl_job_t* job, const pappl_pr_options_t& options,
                                      const JobServices& services,
                                      const JobRequest::Lookup& ofDocument) {
  try {
    JobRequest request = requestOf(job, options);
    if (ofDocument) {
      request.ofJob = [ofDocument, ofJob = request.ofJob](const char* attribute) {
        const auto value = ofDocument(attribute);
        return value ? value : ofJob(attribute);
      };
    }
    request.clientIsLocal = services.origins == nullptr || services.origins->isLocal(job);
    return makeJobSettings(request);
  } catch (const BadAttribute& bad) {
    refuseJob(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, bad.what());
    return std::nullopt;
  }
}

// A job that cannot be noted prints all the same: paper now is worth more than a second copy
// after a crash costs.
void noteBegin(pappl_job_t* job, const JobServices& services) {
  if (services.state == nullptr) return;
  if (!services.state->begin(job)) {
    papplLogJob(job, PAPPL_LOGLEVEL_WARN, "its begin cannot be noted on disk");
  }
}

ActiveJob::ActiveJob(pappl_job_t* job, pappl_device_t* device, const JobServices& services)
    : job_(job), device_(device), services_(services), record_(job, services.papers) {}

std::unique_ptr<ActiveJob> ActiveJob::start(pappl_job_t* job, const pappl_pr_options_t& options,
                                            pappl_device_t* device, const JobServices& services,
                                            const JobRequest::Lookup& ofDocument) {
  std::unique_ptr<ActiveJob> active(new ActiveJob(job, device, services));
  return active->begin(options, ofDocument) ? std::move(active) : nullptr;
}

bool ActiveJob::begin(const pappl_pr_options_t& options, const JobRequest::Lookup& ofDocument) {
  const auto settings = settingsOf(job_, options, services_, ofDocument);
  if (!settings) return false;
  plan_.settings = *settings;
  plan_.target = targetOf(job_, options);
  plan_.copies = static_cast<unsigned>(std::max(options.copies, 1));
  plan_.job = keyOf(job_);
  stream_ = openDeviceStream(device_, record_.bytes());
  if (stream_ == nullptr) {
    refuseJob(job_, PAPPL_JREASON_ABORTED_BY_SYSTEM, "out of memory");
    return false;
  }
  attachJob(device_, job_);
  PrintJob::Surroundings surroundings;
  surroundings.out = stream_.get();
  surroundings.cancel = cancel();
  surroundings.keeper = services_.keeper;
  surroundings.onBegin = [this] {
    // A job that still waits for its printer when the process ends has not begun.
    if (!beginDeviceJob(device_, job_)) return false;
    noteBegin(job_, services_);
    return true;
  };
  surroundings.onPage = [this] { betweenPages(device_); };
  surroundings.onMessage = [this](std::string_view line) {
    papplLogJob(job_, PAPPL_LOGLEVEL_DEBUG, "%s", std::string(line).c_str());
  };
  print_ = std::make_unique<PrintJob>(plan_, surroundings);
  return true;
}

CancelCheck ActiveJob::cancel() const {
  return {isCancelled, job_};
}

void ActiveJob::fail(DocumentError::Kind kind, const std::string& reason) {
  if (failed_) return;
  failed_ = true;
  refuseJob(job_, reasonOf(kind), reason);
}

bool ActiveJob::finish() {
  const bool isWritten = print_->finish(!failed_);
  if (!print_->fault().empty()) fail(DocumentError::Kind::kSystem, print_->fault());
  const bool isTaken = endDeviceJob(device_, job_);
  const std::string fault = deviceFault(device_);
  if (!fault.empty()) fail(DocumentError::Kind::kSystem, "printer: " + fault);
  record_.finish(plan_.settings);
  return isWritten && isTaken && !failed_;
}

}  // namespace wren::app
