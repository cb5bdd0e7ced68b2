// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_order.h"

#ifndef __APPLE__

#include <dlfcn.h>
#include <pappl/pappl.h>
#include <poll.h>

#include <cstring>

#include "app/arrivals.h"
#include "app/each_job.h"
#include "app/end_signal.h"
#include "app/job_turns.h"

namespace wren::app {
namespace {

constexpr const char* kWaiting = "Waiting: jobs before this one.";

JobTurns& turns() {
  static JobTurns line;
  return line;
}

template <typename Function>
Function originalOf(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// PAPPL does not declare these, and calls them by name.
using CheckJobs = void (*)(pappl_printer_t*);
using Flush = void (*)(pappl_client_t*);

/// A job that is looked up again before each use: it may be deleted while it waits.
struct WaitingJob {
  pappl_system_t* system;
  pappl_job_t* job;
  JobKey key;

  explicit WaitingJob(pappl_job_t* waiting)
      : system(papplPrinterGetSystem(papplJobGetPrinter(waiting))),
        job(waiting),
        key(keyOf(waiting)) {}

  pappl_printer_t* printer() const {
    return papplSystemFindPrinter(system, nullptr, key.printerId, nullptr);
  }
  bool isThere() const {
    pappl_printer_t* const found = printer();
    return found != nullptr && papplPrinterFindJob(found, key.jobId) == job;
  }
};

void startNext(const WaitingJob& last) {
  static const auto kCheck = originalOf<CheckJobs>("_papplPrinterCheckJobs");
  pappl_printer_t* const printer = last.printer();
  if (printer != nullptr && kCheck != nullptr) kCheck(printer);
}

void give(const WaitingJob& job) {
  turns().give(job.key.printerId, [&] { startNext(job); });
}

struct OlderJob {
  int than;
  bool isFound = false;
};

void findOlder(pappl_job_t* job, void* search) {
  auto& older = *static_cast<OlderJob*>(search);
  const bool isReady =
      papplJobGetState(job) == IPP_JSTATE_PENDING && papplJobGetFilename(job) != nullptr;
  older.isFound |= isReady && papplJobGetID(job) < older.than;
}

// A printer that is paused is stopped as well.
bool isFirst(const WaitingJob& job) {
  if (isEnding(job.system)) return false;
  pappl_printer_t* const printer = job.printer();
  if (printer == nullptr || papplPrinterGetState(printer) == IPP_PSTATE_STOPPED) return false;
  OlderJob older = {job.key.jobId};
  papplPrinterIterateActiveJobs(printer, findOlder, &older, 1, 0);
  return !older.isFound;
}

bool isConnected(pappl_client_t* client) {
  pollfd connection = {httpGetFd(papplClientGetHTTP(client)), POLLRDHUP, 0};
  return ::poll(&connection, 1, 0) == 0;
}

bool goesOn(const WaitingJob& job, pappl_client_t* client) {
  return job.isThere() && !papplJobIsCanceled(job.job) && isConnected(client);
}

bool isStreamed(pappl_job_t* job) {
  const char* const format = papplJobGetFormat(job);
  return format != nullptr &&
         (std::strcmp(format, "image/pwg-raster") == 0 || std::strcmp(format, "image/urf") == 0);
}

bool takeTurn(const WaitingJob& job, pappl_client_t* client) {
  if (isFirst(job) && turns().take(job.key)) return true;
  papplJobSetMessage(job.job, kWaiting);
  const bool isTaken = turns().wait(
      job.key, [&] { return isFirst(job); }, [&] { return goesOn(job, client); });
  if (isTaken) papplJobSetMessage(job.job, "%s", "");
  return isTaken;
}

struct Refusal {
  ipp_status_t status;
  const char* reason;
};

Refusal refusalOf(const WaitingJob& job, pappl_client_t* client) {
  if (job.isThere() && papplJobIsCanceled(job.job)) {
    return {IPP_STATUS_ERROR_JOB_CANCELED, "Canceled while it waited."};
  }
  if (!isConnected(client)) {
    return {IPP_STATUS_ERROR_INTERNAL, "Its client went away; nothing was printed."};
  }
  if (isEnding(job.system)) {
    return {IPP_STATUS_ERROR_BUSY, "The server is being shut down; nothing was printed."};
  }
  return {IPP_STATUS_ERROR_BUSY, "Too many jobs wait; nothing was printed."};
}

// The client sends it again or tells a person.
void refuse(const WaitingJob& job, pappl_client_t* client) {
  static const auto kFlush = originalOf<Flush>("_papplClientFlushDocumentData");
  const Refusal refusal = refusalOf(job, client);
  if (kFlush != nullptr) kFlush(client);
  papplClientRespondIPP(client, refusal.status, "%s", refusal.reason);
  if (!job.isThere()) return;
  papplJobSetMessage(job.job, "%s", refusal.reason);
  if (!papplJobIsCanceled(job.job)) papplJobCancel(job.job);
}

}  // namespace

void endJobOrder() {
  turns().close();
}

}  // namespace wren::app

// The thread of a job that waits in the spool. A job that cannot begin stays pending; whoever has
// the printer starts the next one.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): PAPPL's name
extern "C" void* _papplJobProcess(pappl_job_t* job) {
  using Process = void* (*)(pappl_job_t*);
  static const auto kProcess = wren::app::originalOf<Process>("_papplJobProcess");
  const wren::app::WaitingJob waiting(job);
  if (kProcess == nullptr || papplJobGetFilename(job) == nullptr) return nullptr;
  if (wren::app::isEnding(waiting.system) || !wren::app::turns().take(waiting.key)) return nullptr;
  if (papplJobGetState(job) == IPP_JSTATE_PENDING) kProcess(job);
  wren::app::give(waiting);
  return nullptr;
}

// The document of a job, in the thread of its client. PAPPL prints raster as it comes in.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): PAPPL's name
extern "C" void _papplJobCopyDocumentData(pappl_client_t* client, pappl_job_t* job) {
  using Copy = void (*)(pappl_client_t*, pappl_job_t*);
  static const auto kCopy = wren::app::originalOf<Copy>("_papplJobCopyDocumentData");
  if (kCopy == nullptr) return;
  const wren::app::WaitingJob waiting(job);
  if (!wren::app::isStreamed(job)) {
    const auto arriving = wren::app::beginArrival();
    if (wren::app::isEnding(waiting.system)) return wren::app::refuse(waiting, client);
    kCopy(client, job);
    return wren::app::keepArrival();
  }
  if (!wren::app::takeTurn(waiting, client)) {
    // After the end of the system, only the end of the process is left.
    if (!wren::app::turns().isClosed()) wren::app::refuse(waiting, client);
    return;
  }
  kCopy(client, job);
  wren::app::give(waiting);
}

#else
namespace wren::app {

void endJobOrder() {}

}  // namespace wren::app
#endif
