// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/state_keeper.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "app/arrivals.h"
#include "app/each_job.h"
#include "app/end_signal.h"
#include "app/job_messages.h"
#include "app/job_order.h"
#include "app/saved_state.h"
#include "common/handles.h"
#include "common/private_file.h"

#ifndef __APPLE__
#include <dlfcn.h>
#endif

namespace wren::app {
namespace {

namespace fs = std::filesystem;

// PAPPL tells of a job before it has received the document, and not afterwards.
constexpr std::chrono::milliseconds kLookAgain(100);

// How often a server that is asked to end looks whether the documents that come in are whole.
constexpr int kMostLooksAtArrivals = 30;

// The one that runs, for papplSystemDelete.
std::atomic<StateKeeper*> running = nullptr;

std::string readWhole(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeWhole(const std::string& file, const std::string& text) {
  const FilePtr out(::fdopen(openPrivateFile(file.c_str()).release(), "w"));
  if (out != nullptr) std::fwrite(text.data(), 1, text.size(), out.get());
}

bool sync(const std::string& path, int flags) {
  const FileDescriptor descriptor(::open(path.c_str(), flags | O_CLOEXEC));
  return descriptor && ::fsync(descriptor.get()) == 0;
}

// A file that PAPPL could not write whole, on a full disk, ends anywhere.
bool isWholeState(const std::string& file) {
  const std::string text = readWhole(file);
  const auto count = [&text](const std::string& what) {
    std::size_t found = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++found;
    return found;
  };
  return text.ends_with('\n') && count("\n<Printer ") == count("\n</Printer>\n");
}

std::string spoolPrefix(const JobKey& job) {
  char name[32];
  std::snprintf(name, sizeof name, "p%05dj%09d-", job.printerId, job.jobId);
  return name;
}

// Documents of jobs that nobody will print, private and perhaps large.
void removeOtherDocuments(const std::string& folder, const std::vector<JobKey>& waiting) {
  std::set<std::string> kept;
  for (const JobKey& job : waiting) kept.insert(spoolPrefix(job));
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    const std::string name = entry.path().filename();
    if (!kept.contains(name.substr(0, spoolPrefix({}).size()))) fs::remove(entry.path(), ignored);
  }
}

pappl_job_t* findJob(pappl_system_t* system, const JobKey& job) {
  pappl_printer_t* printer = papplSystemFindPrinter(system, nullptr, job.printerId, nullptr);
  return printer == nullptr ? nullptr : papplPrinterFindJob(printer, job.jobId);
}

// As PAPPL saves a job that prints; it may be killed before it does.
std::string lineOf(pappl_job_t* job) {
  std::string line;
  const auto add = [&line](const char* name, const std::string& value) {
    line += (line.empty() ? "" : " ") + std::string(name) + "=\"" + escapedValue(value) + "\"";
  };
  const auto text = [](const char* value) { return std::string(value == nullptr ? "" : value); };
  add("created", std::to_string(papplJobGetTimeCreated(job)));
  add("format", text(papplJobGetFormat(job)));
  add("id", std::to_string(papplJobGetID(job)));
  add("name", text(papplJobGetName(job)));
  add("processing", std::to_string(papplJobGetTimeProcessed(job)));
  add("state", std::to_string(IPP_JSTATE_PROCESSING));
  add("username", text(papplJobGetUsername(job)));
  return line;
}

void addJob(pappl_job_t* job, void* text) {
  *static_cast<std::string*>(text) += spoolPrefix(keyOf(job)) +
                                      std::to_string(papplJobGetState(job)) +
                                      (papplJobGetFilename(job) == nullptr ? "-incoming\n" : "\n");
}

struct Search {
  const std::vector<JobKey>& begun;
  bool isFound = false;
};

// A job that comes in page by page cannot be printed by the next process.
void findPrinting(pappl_job_t* job, void* search) {
  auto& printing = *static_cast<Search*>(search);
  const JobKey key = keyOf(job);
  const bool isBegun = std::binary_search(printing.begun.begin(), printing.begun.end(), key);
  printing.isFound |= papplJobGetState(job) == IPP_JSTATE_PROCESSING &&
                      (isBegun || papplJobGetFilename(job) == nullptr);
}

}  // namespace

StateKeeper::StateKeeper(const std::string& folder)
    : file_(folder + "/state"), messages_(folder + "/messages"), begun_(folder + "/begun") {}

StateKeeper::~StateKeeper() {
  stop();
}

void StateKeeper::start(pappl_system_t* system) {
  system_ = system;
  load();
  papplSystemSetSaveCallback(system, onSave, this);
  running = this;
  setArrivalKeeper([this] { waitForSave(); });
  watcher_ = std::thread([this] { watch(); });
}

void StateKeeper::stop() {
  StateKeeper* self = this;
  running.compare_exchange_strong(self, nullptr);
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  tried_.notify_all();
  setArrivalKeeper({});
  if (watcher_.joinable()) watcher_.join();
}

void StateKeeper::load() {
  const std::string text = readWhole(file_);
  SettledState settled = settleJobs(text, begun_.allWithLines(), std::time(nullptr));
  removeOtherDocuments(fs::path(file_).parent_path() / "spool", settled.waiting);
  if (text.empty()) return;
  const std::string path = file_ + ".settled";
  writeWhole(path, settled.text);
  papplSystemLoadState(system_, path.c_str());
  ::unlink(path.c_str());
  restoreMessages(system_, readWhole(messages_));
  for (const EndedJob& ended : settled.ended) {
    pappl_job_t* job = findJob(system_, ended.job);
    if (job != nullptr) papplJobSetMessage(job, "%s", ended.message.c_str());
  }
  waiting_ = std::move(settled.waiting);
}

bool StateKeeper::begin(pappl_job_t* job) {
  using Kept = BegunJobs::Kept;
  const bool hasDocument = papplJobGetFilename(job) != nullptr;
  return begun_.begin({keyOf(job), lineOf(job)}, hasDocument ? Kept::kOfMachine : Kept::kOfProcess);
}

// Until all changes until now are saved, or the attempt to do so has failed.
void StateKeeper::waitForSave() {
  std::unique_lock lock(mutex_);
  const unsigned long mine = ++changes_;
  wake_.notify_all();
  tried_.wait(lock, [&] { return stopping_ || triedChanges_ >= mine; });
}

bool StateKeeper::save() {
  const std::lock_guard saving(saving_);
  unsigned long changes;
  {
    const std::lock_guard lock(mutex_);
    changes = changes_;
  }
  const bool isSaved = write();
  const std::lock_guard lock(mutex_);
  triedChanges_ = changes;
  if (isSaved) savedChanges_ = changes;
  tried_.notify_all();
  return isSaved;
}

bool StateKeeper::write() {
  std::vector<JobKey> ended;
  for (const JobKey& key : begun_.all()) {
    pappl_job_t* job = findJob(system_, key);
    if (job == nullptr || papplJobGetState(job) >= IPP_JSTATE_CANCELED) ended.push_back(key);
  }
  const std::string path = file_ + ".new";
  const bool isWritten = openPrivateFile(path.c_str()) &&
                         papplSystemSaveState(system_, path.c_str()) && isWholeState(path) &&
                         sync(path, O_RDONLY);
  if (!isWritten) return false;
  // Before the state that calls their jobs ended. Losing them costs words, not paper.
  writeWhole(messages_ + ".new", endedMessages(system_));
  std::rename((messages_ + ".new").c_str(), messages_.c_str());
  if (std::rename(path.c_str(), file_.c_str()) != 0) return false;
  sync(fs::path(file_).parent_path(), O_RDONLY | O_DIRECTORY);
  for (const JobKey& key : ended) begun_.forget(key);
  return true;
}

// PAPPL would wait a minute for jobs that wait themselves, for a printer that is off: the next
// process prints them.
void StateKeeper::endIfNothingPrints() {
  const std::vector<JobKey> begun = begun_.all();
  Search printing = {begun};
  forEachActiveJob(system_, findPrinting, &printing);
  if (printing.isFound) return;
  // A document that comes in slowly is not waited for: its client has no answer yet.
  const auto quiet = holdArrivals();
  if (!quiet.owns_lock() && ++looksAtArrivals_ < kMostLooksAtArrivals) return;
  if (save()) std::_Exit(EXIT_SUCCESS);
}

// PAPPL starts no job that it has loaded before another one comes.
void StateKeeper::resumeWaiting() {
  if (waiting_.empty() || !papplSystemIsRunning(system_)) return;
  std::set<int> printers;
  for (const JobKey& job : waiting_) printers.insert(job.printerId);
  waiting_.clear();
  for (const int id : printers) {
    pappl_printer_t* printer = papplSystemFindPrinter(system_, nullptr, id, nullptr);
    if (printer != nullptr) papplPrinterResume(printer);
  }
}

std::string StateKeeper::activeJobs() const {
  std::string text;
  forEachActiveJob(system_, addJob, &text);
  return text;
}

void StateKeeper::watch() {
  std::string known;
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    const unsigned long seen = changes_;
    const bool isSaved = seen == savedChanges_;
    lock.unlock();
    if (papplSystemIsRunning(system_)) watchForEndSignals();
    resumeWaiting();
    limitEndedJobs(system_);
    papplSystemCleanJobs(system_);
    std::string jobs = activeJobs();
    if (isEnding(system_) && !jobs.empty()) endIfNothingPrints();
    const auto begin = std::chrono::steady_clock::now();
    const bool isKept = (isSaved && jobs == known) || save();
    const auto duration = std::chrono::steady_clock::now() - begin;
    const bool isIdle = isKept && waiting_.empty() && jobs.empty();
    known = std::move(jobs);
    lock.lock();
    // Clients wait for the locks of a save: they get their turn before the next one.
    wake_.wait_for(lock, duration, [this] { return stopping_; });
    const auto isNew = [this, seen] { return stopping_ || changes_ != seen; };
    if (isIdle) {
      wake_.wait(lock, isNew);
    } else {
      wake_.wait_for(lock, kLookAgain, isNew);
    }
  }
}

void StateKeeper::noteChange() {
  const std::lock_guard lock(mutex_);
  ++changes_;
  // With the lock: `stop` takes it, so that no one is here when this object is destroyed.
  wake_.notify_all();
}

// The main loop, which accepts connections, does not wait for a save, except for the last.
bool StateKeeper::onSave(pappl_system_t* system, void* keeper) {
  auto* const self = static_cast<StateKeeper*>(keeper);
  if (!papplSystemIsRunning(system) || isEnding(system)) return self->save();
  self->noteChange();
  return true;
}

}  // namespace wren::app

#ifndef __APPLE__
// PAPPL's main loop deletes the system and returns: nobody may look at it any more.
extern "C" void papplSystemDelete(pappl_system_t* system) {
  wren::app::StateKeeper* const keeper = wren::app::running;
  if (keeper != nullptr) keeper->stop();
  wren::app::endJobOrder();
  using Delete = void (*)(pappl_system_t*);
  static const auto kOriginal = reinterpret_cast<Delete>(dlsym(RTLD_NEXT, "papplSystemDelete"));
  if (kOriginal != nullptr) kOriginal(system);
}
#endif
