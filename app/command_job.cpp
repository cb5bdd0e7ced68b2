// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/command_job.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/device_stream.h"
#include "app/guarded.h"
#include "app/network_device.h"
#include "app/page_sink.h"
#include "app/paper.h"
#include "common/handles.h"
#include "job/command_file.h"

namespace wren::app {
namespace {

using job::CommandKind;
using job::PrinterCommand;

struct DeleteOptions {
  void operator()(pappl_pr_options_t* options) const { papplJobDeletePrintOptions(options); }
};
using PrintOptions = std::unique_ptr<pappl_pr_options_t, DeleteOptions>;

bool isCancelled(const void* job) {
  // The function only reads, but its type is that of all others.
  return papplJobIsCanceled(static_cast<pappl_job_t*>(const_cast<void*>(job)));
}

// One byte more than a command file may have tells that it is too long.
std::optional<std::string> readText(const char* path) {
  const FilePtr file(path == nullptr ? nullptr : std::fopen(path, "rb"));
  if (file == nullptr) return std::nullopt;
  std::string text(job::kMaxCommandFile + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file.get()));
  if (std::ferror(file.get()) != 0) return std::nullopt;
  return text;
}

// The self-test page is as wide as the head. A quarter of a dot more: the core rounds down.
double headWidthPt(pappl_printer_t* printer) {
  constexpr double kPointsPerInch = 72.0;
  const char* driver = papplPrinterGetDriverName(printer);
  const Paper* paper = findPaper(driver == nullptr ? "" : driver);
  return paper == nullptr ? 0.0 : (paper->headWidthPx + 0.25) * kPointsPerInch / kDotsPerInch;
}

// Why a command is not done; null if it is. The words of the core are those of the PPDs.
const char* faultOf(const PrinterCommand& command, const JobSettings& settings) {
  if (command.kind == CommandKind::kOpenDrawer && !settings.mayOpenDrawer) {
    return "only clients on the printer's own machine may open the drawer";
  }
  if (command.kind == CommandKind::kCut && command.value.value_or(settings.core.docCutType) == 0) {
    return "the printer does not cut (doc-cut-type); ask for a full or partial cut";
  }
  return nullptr;
}

/// The commands of one job.
class CommandJob {
 public:
  CommandJob(pappl_job_t* job, pappl_device_t* device, const JobServices& services)
      : job_(job), device_(device), services_(services) {}

  bool print() {
    const auto text = readText(papplJobGetFilename(job_));
    if (!text) {
      refuseJob(job_, PAPPL_JREASON_ABORTED_BY_SYSTEM, "the commands cannot be read");
      return false;
    }
    const PrintOptions options(papplJobCreatePrintOptions(job_, 1, false));
    if (options == nullptr) throw std::bad_alloc();
    const auto settings = settingsOf(job_, *options, services_);
    if (!settings) return false;
    settings_ = *settings;
    settings_.core.maxMediaWidth = headWidthPt(papplJobGetPrinter(job_));
    choose(job::parseCommandFile(*text));
    if (commands_.empty()) {
      refuseJob(job_, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR,
                errors_.empty() ? "no commands" : errors_);
      return false;
    }
    return write();
  }

 private:
  void choose(const job::CommandFile& file) {
    for (const std::string& error : file.errors) addError(error);
    for (const PrinterCommand& command : file.commands) {
      const char* fault = faultOf(command, settings_);
      if (fault == nullptr) {
        commands_.push_back(command);
      } else {
        addError(job::kCommandNames[static_cast<std::size_t>(command.kind)] + std::string(": ") +
                 fault);
      }
    }
  }

  void addError(const std::string& error) {
    papplLogJob(job_, PAPPL_LOGLEVEL_ERROR, "%s", error.c_str());
    errors_ += (errors_.empty() ? "" : "; ") + error;
  }

  bool write() {
    PaperRecord record(job_, services_.papers);
    const FilePtr stream = openDeviceStream(device_, record.bytes());
    if (stream == nullptr) throw std::bad_alloc();
    attachJob(device_, job_);
    const CancelCheck cancel = {isCancelled, job_};
    // A job that still waits for its printer when the process ends has not begun.
    const bool hasBegun = beginDeviceJob(device_, job_);
    if (hasBegun) noteBegin(job_, services_);
    for (const PrinterCommand& command : commands_) {
      if (!hasBegun || cancel.isCancelled()) break;
      const char* fault = writePrinterCommand(stream.get(), command, settings_.core, cancel);
      if (fault != nullptr) addError(fault);
      std::fflush(stream.get());
    }
    const bool isTaken = endDeviceJob(device_, job_) && std::ferror(stream.get()) == 0;
    record.finish(settings_);
    if (const std::string fault = deviceFault(device_); !fault.empty()) {
      refuseJob(job_, PAPPL_JREASON_ABORTED_BY_SYSTEM, "printer: " + fault);
    } else if (!errors_.empty()) {
      papplJobSetMessage(job_, "%s", errors_.c_str());
      papplJobSetReasons(job_, PAPPL_JREASON_ERRORS_DETECTED, PAPPL_JREASON_NONE);
    }
    if (isTaken && !cancel.isCancelled()) papplJobSetImpressionsCompleted(job_, 1);
    return hasBegun && isTaken;
  }

  pappl_job_t* job_;
  pappl_device_t* device_;
  const JobServices& services_;
  JobSettings settings_;
  std::vector<PrinterCommand> commands_;
  std::string errors_;
};

// `services` is data of the callback, which PAPPL keeps as not constant.
bool printCommands(pappl_job_t* job, pappl_device_t* device, void* services) {
  return guarded(job, [&] {
    return CommandJob(job, device, *static_cast<const JobServices*>(services)).print();
  });
}

}  // namespace

void acceptCommands(pappl_system_t* system, const char* printerFormat,
                    const JobServices& services) {
  papplSystemAddMIMEFilter(system, kCommandFormat, printerFormat, printCommands,
                           const_cast<JobServices*>(&services));
}

}  // namespace wren::app
