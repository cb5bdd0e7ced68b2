// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/raster_callbacks.h"

#include <optional>
#include <string>
#include <vector>

#include "app/guarded.h"
#include "app/raster_pages.h"
#include "app/received_header.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

// A raster job between its callbacks.
struct RasterJob {
  std::unique_ptr<ActiveJob> active;
  std::vector<std::uint8_t> row;
  unsigned rows = 0;
  bool pageIsOpen = false;
};

RasterJob* stateOf(pappl_job_t* job) {
  return static_cast<RasterJob*>(papplJobGetData(job));
}

const JobServices& servicesOf(pappl_job_t* job) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(papplJobGetPrinter(job), &data);
  return *static_cast<const JobServices*>(data.extension);
}

// Why the page whose header came last cannot be printed, or why there is none. PAPPL refuses some
// of them by itself, without a word.
std::optional<DocumentError> faultOf(const cups_page_header2_s& header, const PageTarget& target) {
  if (!receivedFault().empty()) return DocumentError(Kind::kFormat, receivedFault());
  const cups_page_header2_s* received = lastReceivedHeader();
  const std::string fault = rasterFault(received == nullptr ? header : *received, target);
  if (!fault.empty()) return DocumentError(Kind::kUnprintable, fault);
  return std::nullopt;
}

// PAPPL calls a job that it has aborted by itself cancelled as well. What a callback answers for a
// cancelled job must not be false: clients would see it as aborted until it has ended.
bool isCancelledByUser(pappl_job_t* job) {
  return papplJobIsCanceled(job) && papplJobGetState(job) != IPP_JSTATE_ABORTED;
}

bool startJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device) {
  papplJobSetData(job, nullptr);
  return guarded(job, [&] {
    auto active = ActiveJob::start(job, *options, device, servicesOf(job));
    if (active == nullptr) return false;
    auto state = std::make_unique<RasterJob>();
    state->active = std::move(active);
    papplJobSetData(job, state.release());
    return true;
  });
}

bool startPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* /*device*/,
               unsigned /*page*/) {
  RasterJob* state = stateOf(job);
  if (state == nullptr) return false;
  return guarded(job, [&] {
    const cups_page_header2_t& header = options->header;
    const cups_page_header2_t* received = lastReceivedHeader();
    const std::string fault =
        rasterFault(received == nullptr ? header : *received, state->active->target());
    if (!fault.empty()) {
      state->active->fail(Kind::kUnprintable, fault);
      return false;
    }
    state->rows = 0;
    state->row.resize(header.cupsBytesPerLine);
    state->pageIsOpen = state->active->pages().beginPage(header.cupsWidth, header.cupsHeight);
    return state->pageIsOpen;
  });
}

bool writeLine(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* /*device*/,
               unsigned /*y*/, const unsigned char* line) {
  RasterJob* state = stateOf(job);
  if (state == nullptr || !state->pageIsOpen) return false;
  state->row.assign(line, line + state->row.size());
  toInk(options->header, state->row);
  state->active->pages().addRow(state->row.data());
  ++state->rows;
  return true;
}

// A client that goes away in mid-page ends the page early, and a cancelled job gets its lines all
// the same: neither is printed.
bool endPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* /*device*/,
             unsigned /*page*/) {
  RasterJob* state = stateOf(job);
  if (state == nullptr || !state->pageIsOpen) return false;
  state->pageIsOpen = false;
  return guarded(job, [&] {
    if (papplJobIsCanceled(job)) return isCancelledByUser(job);
    if (state->rows != options->header.cupsHeight) {
      state->active->fail(Kind::kFormat, "the page ends after " + std::to_string(state->rows) +
                                             " of " + std::to_string(options->header.cupsHeight) +
                                             " rows");
      return false;
    }
    return state->active->pages().endPage();
  });
}

bool endJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* /*device*/) {
  const std::unique_ptr<RasterJob> state(stateOf(job));
  papplJobSetData(job, nullptr);
  if (state == nullptr) return false;
  return guarded(job, [&] {
    const auto fault = faultOf(options->header, state->active->target());
    const bool isCancelled = isCancelledByUser(job);
    if (fault && !isCancelled) state->active->fail(fault->kind(), fault->what());
    return state->active->finish() || isCancelled;
  });
}

}  // namespace

void setRasterCallbacks(pappl_pr_driver_data_t& data, const JobServices& services) {
  data.extension = const_cast<JobServices*>(&services);
  data.rstartjob_cb = startJob;
  data.rstartpage_cb = startPage;
  data.rwriteline_cb = writeLine;
  data.rendpage_cb = endPage;
  data.rendjob_cb = endJob;
}

}  // namespace wren::app
