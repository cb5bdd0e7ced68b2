// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_checks.h"

#include <unistd.h>

#include <algorithm>

#include "cli/console.h"
#include "cli/device_list.h"
#include "cli/job_options.h"
#include "cli/printer_address.h"
#include "cli/queue_access.h"
#include "cli/rendering.h"
#include "cli/saved_options.h"

namespace wren::cli {
namespace {

constexpr int kConnectSeconds = 5;
constexpr int kSearchSeconds = 10;

std::string inQuotes(const std::string& name) {
  return "the queue '" + name + "'";
}

// The lines *Default... hold the queue's own defaults and may differ.
void checkPpdCopy(const ExistingQueue& existing, const Installation& installation,
                  Diagnosis& diagnosis) {
  const int paper = existing.printer.modelNumber;
  const std::string name = existing.queue.name;
  if (!filter::readPrinterDescription(installation.ppd(paper)).has_value()) return;
  QueueSpec spec;
  spec.name = name;
  spec.uri = existing.queue.uri;
  const PaperPpd ppd = readPaperPpd(installation, paper);
  const QueuePlan plan = planQueue(spec, existing, ppd);
  const bool isOld = std::find(plan.changes.begin(), plan.changes.end(),
                               "the PPD of this version") != plan.changes.end();
  if (isOld) {
    diagnosis.bad(inQuotes(name) + " has the PPD of another version",
                  "sudo lpadmin -p " + name + " -P " + shellWord(installation.ppd(paper)));
  } else {
    diagnosis.good(inQuotes(name) + " has the PPD for " + std::to_string(paper) +
                   " mm of this version");
  }
}

void checkReceiptDefaults(const Queue& queue, Diagnosis& diagnosis) {
  std::string missing;
  for (const auto& [name, value] : kReceiptDefaults) {
    const auto found = queue.defaults.find(name);
    if (found != queue.defaults.end() && found->second == value) continue;
    missing += std::string(" -o ") + name + "-default=" + value;
  }
  if (missing.empty()) {
    diagnosis.good(inQuotes(queue.name) + " keeps receipts upright and at the top");
  } else {
    diagnosis.bad(inQuotes(queue.name) + " lets CUPS centre or turn receipts",
                  "sudo lpadmin -p " + queue.name + missing);
  }
}

void checkDefaultChoices(const ExistingQueue& existing, Diagnosis& diagnosis, int& faults) {
  for (const auto& option : existing.printer.options) {
    const bool isSize = option.keyword == "PageSize" || option.keyword == "PageRegion";
    if (isSize && option.defaultChoice.starts_with("Custom")) continue;
    if (option.find(option.defaultChoice) != nullptr || option.choices.empty()) continue;
    ++faults;
    diagnosis.bad(inQuotes(existing.queue.name) + " has a default that its PPD does not know: " +
                      option.keyword + "=" + option.defaultChoice,
                  "sudo lpadmin -p " + existing.queue.name + " -o " + option.keyword + "=" +
                      option.choices[0].name);
  }
}

// CUPS ignores in silence what the PPD does not know.
void checkSavedOptions(const ExistingQueue& existing, const Installation& installation,
                       Diagnosis& diagnosis) {
  const std::string& name = existing.queue.name;
  int faults = 0;
  checkDefaultChoices(existing, diagnosis, faults);
  for (const auto& [option, value] : existing.queue.defaults) {
    const std::string problem = problemOfOption(existing.printer, option, value);
    if (problem.empty() || option.starts_with("notify-")) continue;
    ++faults;
    diagnosis.bad(inQuotes(name) + " has a saved option without effect: " + problem,
                  "sudo lpadmin -p " + name + " -R " + shellWord(option + "-default"));
  }
  for (const SavedOptions& saved : readSavedOptions(installation.pathOf("/etc/cups"), name)) {
    for (const auto& [option, value] : saved.options) {
      const std::string problem = problemOfOption(existing.printer, option, value);
      if (problem.empty()) continue;
      ++faults;
      std::string fault = saved.file;
      fault.append(" has an option for '").append(name);
      fault.append("' without effect: ").append(problem);
      diagnosis.bad(fault, removalCommand(saved, name, option, geteuid() == 0));
    }
  }
  if (faults == 0)
    diagnosis.good(inQuotes(name) + " has no saved option that its PPD does not know");
}

// What went wrong with a job is past: no fault of the queue.
void noteJobOptions(Scheduler& scheduler, const ExistingQueue& existing, Diagnosis& diagnosis) {
  for (const RememberedJob& job : scheduler.jobs(existing.queue.name)) {
    for (const auto& option : existing.printer.options) {
      const auto found = job.options.find(option.keyword);
      if (found == job.options.end()) continue;
      const std::string problem = problemOfOption(existing.printer, option.keyword, found->second);
      if (problem.empty()) continue;
      diagnosis.note("job " + std::to_string(job.id) +
                     " had an option that CUPS ignored: " + problem);
    }
  }
}

void checkIsOpen(const Queue& queue, Diagnosis& diagnosis) {
  if (queue.isStopped) {
    diagnosis.bad(inQuotes(queue.name) + " is stopped", "sudo cupsenable " + queue.name);
  } else if (!queue.takesJobs) {
    diagnosis.bad(inQuotes(queue.name) + " takes no jobs", "sudo cupsaccept " + queue.name);
  } else {
    diagnosis.good(inQuotes(queue.name) + " takes and prints jobs");
  }
}

void checkNetworkPrinter(const Queue& queue, const PrinterAddress& address, Diagnosis& diagnosis) {
  const std::string place = address.host + " port " + std::to_string(address.port);
  if (canConnect(address, kConnectSeconds)) {
    diagnosis.good("the printer of '" + queue.name + "' answers at " + place);
  } else {
    diagnosis.bad(
        "the printer of '" + queue.name + "' does not answer at " + place,
        "ping " + shellWord(address.host) + "   # then its cable, its power and its address");
  }
}

void checkUsbPrinter(const Queue& queue, Diagnosis& diagnosis) {
  const DeviceList list = findDevices("usb", kSearchSeconds);
  const bool isThere = std::any_of(list.devices.begin(), list.devices.end(),
                                   [&](const Device& device) { return device.uri == queue.uri; });
  if (isThere) {
    diagnosis.good("the printer of '" + queue.name + "' is plugged in");
  } else if (list.isPartial) {
    diagnosis.note("whether the printer of '" + queue.name +
                   "' is plugged in, only root can see: sudo wren doctor " + queue.name);
  } else {
    diagnosis.bad("the printer of '" + queue.name + "' is not found at " + queue.uri,
                  "sudo wren devices   # shows what is plugged in; then sudo wren add-queue " +
                      queue.name + " ADDRESS");
  }
}

void checkDevice(const Queue& queue, Diagnosis& diagnosis) {
  const auto address = parsePrinterAddress(queue.uri);
  if (address.has_value()) {
    checkNetworkPrinter(queue, *address, diagnosis);
  } else if (queue.uri.starts_with("usb://")) {
    checkUsbPrinter(queue, diagnosis);
  } else {
    diagnosis.note("whether " + queue.uri + " (queue '" + queue.name +
                   "') can be reached is not known here");
  }
}

}  // namespace

void checkQueue(Scheduler& scheduler, const Installation& installation, const std::string& name,
                Diagnosis& diagnosis) {
  diagnosis.beginQueue(name);
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) {
    diagnosis.bad("there is no queue '" + name + "'",
                  "sudo wren add-queue " + shellWord(name) + " ADDRESS");
    return;
  }
  if (!queue->isOurs()) {
    diagnosis.bad(inQuotes(name) + " does not print with a PPD of Wren's",
                  "sudo lpadmin -p " + name + " -P " + shellWord(installation.ppd(80)));
    return;
  }
  if (const auto existing = readExistingQueue(scheduler, *queue)) {
    checkPpdCopy(*existing, installation, diagnosis);
    checkSavedOptions(*existing, installation, diagnosis);
    noteJobOptions(scheduler, *existing, diagnosis);
  } else {
    diagnosis.note("the PPD of the queue '" + name + "' cannot be read");
  }
  checkReceiptDefaults(*queue, diagnosis);
  checkIsOpen(*queue, diagnosis);
  checkDevice(*queue, diagnosis);
}

}  // namespace wren::cli
