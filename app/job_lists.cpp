// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_lists.h"

#ifndef __APPLE__

#include <cups/array.h>
#include <dlfcn.h>

#include <ctime>
#include <map>
#include <mutex>

namespace wren::app {
namespace {

constexpr std::time_t kKeptSeconds = 60;

struct JobLists {
  cups_array_t* all = nullptr;  // owns the jobs
  cups_array_t* active = nullptr;
  cups_array_t* ended = nullptr;  // newest first
};

thread_local JobLists* listsBeingMade = nullptr;

/// The lists of each printer. PAPPL may give a new printer the address of a deleted one.
class KnownLists {
 public:
  void set(pappl_printer_t* printer, const JobLists& lists) {
    const std::lock_guard lock(mutex_);
    lists_[printer] = lists;
  }
  JobLists find(pappl_printer_t* printer) {
    const std::lock_guard lock(mutex_);
    const auto found = lists_.find(printer);
    return found == lists_.end() ? JobLists() : found->second;
  }

 private:
  std::mutex mutex_;
  std::map<pappl_printer_t*, JobLists> lists_;
};

KnownLists& knownLists() {
  static KnownLists lists;
  return lists;
}

int compareOldestFirst(void* first, void* second, void* /*data*/) {
  return papplJobGetID(static_cast<pappl_job_t*>(first)) -
         papplJobGetID(static_cast<pappl_job_t*>(second));
}

bool isOfPappl(cups_array_func_t compare) {
  Dl_info own = {};
  Dl_info pappl = {};
  return dladdr(reinterpret_cast<void*>(compare), &own) != 0 &&
         dladdr(dlsym(RTLD_DEFAULT, "papplJobGetID"), &pappl) != 0 &&
         own.dli_fbase == pappl.dli_fbase;
}

// In the order in which they are made. Only the list of all jobs frees them.
cups_array_t** nextList(JobLists& lists, bool freesItsItems) {
  if (freesItsItems) return lists.all == nullptr ? &lists.all : nullptr;
  if (lists.active == nullptr) return &lists.active;
  return lists.ended == nullptr ? &lists.ended : nullptr;
}

using NewArray = cups_array_t* (*)(cups_array_func_t, void*, cups_ahash_func_t, int,
                                   cups_acopy_func_t, cups_afree_func_t);

void dropOldest(const JobLists& lists, int most) {
  const std::time_t limit = std::time(nullptr) - kKeptSeconds;
  for (int left = cupsArrayCount(lists.ended); left > most; --left) {
    auto* const oldest = static_cast<pappl_job_t*>(cupsArrayLast(lists.ended));
    if (left <= 2 * most && papplJobGetTimeCompleted(oldest) >= limit) return;
    cupsArrayRemove(lists.ended, oldest);
    cupsArrayRemove(lists.all, oldest);
  }
}

}  // namespace

ListsOfNewPrinter::ListsOfNewPrinter() {
  listsBeingMade = new JobLists();
}

ListsOfNewPrinter::~ListsOfNewPrinter() {
  delete listsBeingMade;
  listsBeingMade = nullptr;
}

void ListsOfNewPrinter::belongTo(pappl_printer_t* printer) const {
  if (printer != nullptr) knownLists().set(printer, *listsBeingMade);
}

}  // namespace wren::app

// Replaces the function of libcups for every caller of the process.
extern "C" cups_array_t* cupsArrayNew3(cups_array_func_t compare, void* data,
                                       cups_ahash_func_t hash, int hashSize, cups_acopy_func_t copy,
                                       cups_afree_func_t release) {
  using namespace wren::app;
  static const auto kNew = reinterpret_cast<NewArray>(dlsym(RTLD_NEXT, "cupsArrayNew3"));
  if (kNew == nullptr) return nullptr;
  const bool isCandidate =
      listsBeingMade != nullptr && compare != nullptr && copy == nullptr && isOfPappl(compare);
  cups_array_t** const list = isCandidate ? nextList(*listsBeingMade, release != nullptr) : nullptr;
  if (list == nullptr) return kNew(compare, data, hash, hashSize, copy, release);
  const bool areWaiting = list == &listsBeingMade->active;
  return *list =
             kNew(areWaiting ? compareOldestFirst : compare, data, hash, hashSize, copy, release);
}

// PAPPL holds the lock of the printer.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): PAPPL's name
extern "C" void _papplPrinterCleanJobsNoLock(pappl_printer_t* printer) {
  const wren::app::JobLists lists = wren::app::knownLists().find(printer);
  if (lists.all == nullptr || lists.ended == nullptr) return;
  wren::app::dropOldest(lists, papplPrinterGetMaxCompletedJobs(printer));
}

#else
namespace wren::app {

ListsOfNewPrinter::ListsOfNewPrinter() = default;
ListsOfNewPrinter::~ListsOfNewPrinter() = default;
void ListsOfNewPrinter::belongTo(pappl_printer_t* /*printer*/) const {}

}  // namespace wren::app
#endif
