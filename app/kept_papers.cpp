// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/kept_papers.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

#include "app/device_stream.h"
#include "app/each_job.h"
#include "app/job_attributes.h"
#include "app/vendor_option.h"
#include "common/handles.h"
#include "common/private_file.h"

namespace wren::app {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr const char* kBytesSuffix = ".prn";
constexpr const char* kFactsSuffix = ".json";
constexpr int kWatchSeconds = 2;

bool writePrivately(const std::string& path, const std::string& bytes) {
  FileDescriptor descriptor = openPrivateFile(path.c_str());
  const FilePtr file(descriptor ? ::fdopen(descriptor.get(), "wb") : nullptr);
  if (file == nullptr) return false;
  descriptor.release();
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  return std::fflush(file.get()) == 0 && std::ferror(file.get()) == 0;
}

std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string textOf(const char* text) {
  return text == nullptr ? std::string() : text;
}

// Text that is no UTF-8 loses the bytes that are none.
std::string factsOf(const KeptPaper& paper) {
  const Json facts = {{"name", paper.name},
                      {"user", paper.user},
                      {"printedAt", static_cast<std::int64_t>(paper.printedAt)},
                      {"settings", paper.settings}};
  return facts.dump(1, ' ', false, Json::error_handler_t::ignore);
}

KeptPaper paperOf(const JobKey& job, const std::string& facts) {
  KeptPaper paper;
  paper.job = job;
  try {
    const Json json = Json::parse(facts);
    paper.name = json.value("name", "");
    paper.user = json.value("user", "");
    paper.printedAt = json.value("printedAt", std::int64_t{0});
    paper.settings = json.value("settings", paper.settings);
  } catch (const Json::exception&) {
    // A file that somebody changed: the paper itself is shown all the same.
  }
  return paper;
}

void collectId(pappl_printer_t* printer, void* ids) {
  static_cast<std::vector<int>*>(ids)->push_back(papplPrinterGetID(printer));
}

// A printer whose lock is held must not be asked for its attributes.
bool pruneAll(pappl_system_t* system, void* data) {
  try {
    auto& papers = *static_cast<KeptPapers*>(data);
    const std::vector<int> withPapers = papers.printers();
    if (withPapers.empty()) return true;
    std::vector<int> known;
    papplSystemIteratePrinters(system, collectId, &known);
    for (const int id : withPapers) {
      const bool isKnown = std::find(known.begin(), known.end(), id) != known.end();
      pappl_printer_t* const printer =
          isKnown ? papplSystemFindPrinter(system, nullptr, id, nullptr) : nullptr;
      papers.prune(id, printer == nullptr ? 0 : keptPapersOf(printer));
    }
  } catch (const std::exception& error) {
    papplLog(system, PAPPL_LOGLEVEL_ERROR, "Kept papers: %s", error.what());
  }
  return true;
}

}  // namespace

std::string KeptPapers::pathOf(const JobKey& job, const char* suffix) const {
  return folder_ + "/" + std::to_string(job.printerId) + "-" + std::to_string(job.jobId) + suffix;
}

std::vector<JobKey> KeptPapers::jobs() const {
  std::vector<JobKey> jobs;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    JobKey job;
    if (entry.path().extension() == kBytesSuffix &&
        // NOLINTNEXTLINE(cert-err34-c): names of our own; others give numbers that no job has
        std::sscanf(entry.path().stem().c_str(), "%d-%d", &job.printerId, &job.jobId) == 2) {
      jobs.push_back(job);
    }
  }
  // The numbers of jobs grow.
  std::sort(jobs.rbegin(), jobs.rend());
  return jobs;
}

void KeptPapers::remove(const JobKey& job) const {
  std::error_code ignored;
  fs::remove(pathOf(job, kBytesSuffix), ignored);
  fs::remove(pathOf(job, kFactsSuffix), ignored);
}

void KeptPapers::keep(const KeptPaper& paper, const std::string& bytes, std::size_t most) {
  {
    const std::lock_guard lock(mutex_);
    std::error_code ignored;
    fs::create_directories(folder_, ignored);
    fs::permissions(folder_, fs::perms::owner_all, ignored);
    if (!writePrivately(pathOf(paper.job, kFactsSuffix), factsOf(paper)) ||
        !writePrivately(pathOf(paper.job, kBytesSuffix), bytes)) {
      remove(paper.job);
    }
  }
  prune(paper.job.printerId, most);
}

std::vector<KeptPaper> KeptPapers::list(int printerId) const {
  const std::lock_guard lock(mutex_);
  std::vector<KeptPaper> papers;
  for (const JobKey& job : jobs()) {
    if (job.printerId != printerId) continue;
    papers.push_back(paperOf(job, contentOf(pathOf(job, kFactsSuffix)).value_or("")));
  }
  return papers;
}

std::optional<std::string> KeptPapers::bytesOf(const JobKey& job) const {
  const std::lock_guard lock(mutex_);
  return contentOf(pathOf(job, kBytesSuffix));
}

void KeptPapers::prune(int printerId, std::size_t most) {
  const std::lock_guard lock(mutex_);
  std::size_t kept = 0;
  for (const JobKey& job : jobs()) {
    if (job.printerId == printerId && ++kept > most) remove(job);
  }
}

std::vector<int> KeptPapers::printers() const {
  const std::lock_guard lock(mutex_);
  std::set<int> ids;
  for (const JobKey& job : jobs()) ids.insert(job.printerId);
  return {ids.begin(), ids.end()};
}

PaperRecord::PaperRecord(pappl_job_t* job, KeptPapers* papers) : job_(job), papers_(papers) {
  if (papers_ != nullptr) most_ = keptPapersOf(papplJobGetPrinter(job));
}

void PaperRecord::finish(const JobSettings& settings) {
  if (most_ == 0 || bytes_.empty() || bytes_.size() >= kMostRecordedBytes) return;
  KeptPaper paper;
  paper.job = keyOf(job_);
  paper.name = textOf(papplJobGetName(job_));
  paper.user = textOf(papplJobGetUsername(job_));
  paper.printedAt = std::time(nullptr);
  for (const VendorOption& option : vendorOptions()) {
    if (option.field != nullptr) paper.settings[option.attribute] = settings.core.*option.field;
  }
  paper.settings[kHalftoneAttribute] = settings.core.halftoneType;
  paper.settings[kContrastAttribute] = settings.contrast;
  paper.settings["brightness"] = settings.core.brightness;
  papers_->keep(paper, bytes_, most_);
}

std::size_t keptPapersOf(pappl_printer_t* printer) {
  const VendorOption& option = *findVendorOption(kKeptPapersAttribute);
  std::int32_t most = option.initial;
  const auto text = printerDefault(printer, kKeptPapersAttribute);
  if (text && !parseVendorValue(option, *text, most)) most = option.initial;
  return static_cast<std::size_t>(most);
}

void watchKeptPapers(pappl_system_t* system, KeptPapers& papers) {
  papplSystemAddTimerCallback(system, 0, kWatchSeconds, pruneAll, &papers);
}

}  // namespace wren::app
