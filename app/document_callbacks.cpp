// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/document_callbacks.h"

#include <memory>

#include "app/document.h"
#include "app/guarded.h"

namespace wren::app {
namespace {

struct DeleteOptions {
  void operator()(pappl_pr_options_t* options) const { papplJobDeletePrintOptions(options); }
};
using PrintOptions = std::unique_ptr<pappl_pr_options_t, DeleteOptions>;

DocumentRequest requestFor(pappl_job_t* job, const ActiveJob& active, const JobServices& services) {
  DocumentRequest request;
  request.path = papplJobGetFilename(job);
  request.target = active.target();
  request.charactersPerInch = active.settings().textPitch;
  if (services.origins != nullptr) request.language = services.origins->languageOf(job);
  request.cancel = active.cancel();
  request.log = [job](const std::string& line) {
    papplLogJob(job, PAPPL_LOGLEVEL_INFO, "%s", line.c_str());
  };
  return request;
}

// PAPPL counts the impressions of raster jobs alone.
class CountingSink : public PageSink {
 public:
  CountingSink(pappl_job_t* job, PrintJob& pages) : job_(job), pages_(pages) {}

  bool beginPage(unsigned widthPx, unsigned heightPx) override {
    return pages_.beginPage(widthPx, heightPx);
  }
  void addRow(const std::uint8_t* ink) override { pages_.addRow(ink); }
  bool endPage() override {
    if (!pages_.endPage()) return false;
    papplJobSetImpressionsCompleted(job_, 1);
    return true;
  }

 private:
  pappl_job_t* job_;
  PrintJob& pages_;
};

void readInto(pappl_job_t* job, ActiveJob& active, const JobServices& services) {
  CountingSink sink(job, active.pages());
  try {
    readDocument(papplJobGetFormat(job), requestFor(job, active, services), sink);
  } catch (const DocumentError& error) {
    active.fail(error.kind(), error.what());
  }
}

// `services` is data of the callback, which PAPPL keeps as not constant.
bool printDocument(pappl_job_t* job, pappl_device_t* device, void* services) {
  return guarded(job, [&] {
    const PrintOptions options(papplJobCreatePrintOptions(job, 1, false));
    if (options == nullptr) throw std::bad_alloc();
    const auto& shared = *static_cast<const JobServices*>(services);
    const auto active = ActiveJob::start(job, *options, device, shared);
    if (active == nullptr) return false;
    try {
      readInto(job, *active, shared);
    } catch (const std::bad_alloc&) {
      active->fail(DocumentError::Kind::kSystem, "out of memory");
    }
    return active->finish();
  });
}

}  // namespace

void acceptDocuments(pappl_system_t* system, const char* printerFormat,
                     const JobServices& services) {
  for (const std::string& format : documentFormats()) {
    papplSystemAddMIMEFilter(system, format.c_str(), printerFormat, printDocument,
                             const_cast<JobServices*>(&services));
  }
}

}  // namespace wren::app
