// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/each_job.h"

#include <algorithm>
#include <vector>

namespace wren::app {
namespace {

constexpr int kMostEndedJobs = 500;
constexpr int kMostOfOnePrinter = 100;
constexpr int kLeastOfOnePrinter = 10;

using Iterate = void(pappl_printer_t*, pappl_job_cb_t, void*, int, int);

void addId(pappl_printer_t* printer, void* ids) {
  static_cast<std::vector<int>*>(ids)->push_back(papplPrinterGetID(printer));
}

// They may be deleted at any time.
std::vector<int> printerIds(pappl_system_t* system) {
  std::vector<int> ids;
  papplSystemIteratePrinters(system, addId, &ids);
  return ids;
}

// Not in the callback of the printers: the system is locked there.
void forEachJob(pappl_system_t* system, Iterate* iterate, pappl_job_cb_t act, void* data) {
  for (const int id : printerIds(system)) {
    pappl_printer_t* printer = papplSystemFindPrinter(system, nullptr, id, nullptr);
    if (printer != nullptr) iterate(printer, act, data, 1, 0);
  }
}

}  // namespace

JobKey keyOf(pappl_job_t* job) {
  return {papplPrinterGetID(papplJobGetPrinter(job)), papplJobGetID(job)};
}

void forEachActiveJob(pappl_system_t* system, pappl_job_cb_t act, void* data) {
  forEachJob(system, papplPrinterIterateActiveJobs, act, data);
}

void forEachEndedJob(pappl_system_t* system, pappl_job_cb_t act, void* data) {
  forEachJob(system, papplPrinterIterateCompletedJobs, act, data);
}

void limitEndedJobs(pappl_system_t* system) {
  const std::vector<int> ids = printerIds(system);
  if (ids.empty()) return;
  const int most = std::clamp(kMostEndedJobs / static_cast<int>(ids.size()), kLeastOfOnePrinter,
                              kMostOfOnePrinter);
  for (const int id : ids) {
    pappl_printer_t* printer = papplSystemFindPrinter(system, nullptr, id, nullptr);
    // Setting it is a change that has to be saved.
    if (printer != nullptr && papplPrinterGetMaxCompletedJobs(printer) != most) {
      papplPrinterSetMaxCompletedJobs(printer, most);
    }
  }
}

}  // namespace wren::app
