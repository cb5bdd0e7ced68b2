// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/doctor_command.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "cli/failure.h"
#include "cli/queue_access.h"
#include "cli/queue_checks.h"
#include "cli/report.h"
#include "cli/system_checks.h"

namespace wren::cli {
namespace {

using Json = nlohmann::ordered_json;

const char* nameOf(Verdict verdict) {
  if (verdict == Verdict::kGood) return "ok";
  return verdict == Verdict::kBad ? "bad" : "note";
}

Json checksOf(const Diagnosis& diagnosis, const std::string& queue) {
  Json list = Json::array();
  for (const Check& check : diagnosis.checks()) {
    if (check.queue != queue) continue;
    Json entry = {{"state", nameOf(check.verdict)}, {"text", check.text}};
    if (!check.fix.empty()) entry["fix"] = check.fix;
    list.push_back(entry);
  }
  return list;
}

// The words that `add-queue --from` reads, where the queue is one of Wren's.
Json describeQueue(Scheduler& scheduler, const Installation& installation,
                   const std::string& name) {
  Json entry = {{"name", name}};
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) return entry;
  entry["uri"] = queue->uri;
  entry["makeAndModel"] = queue->makeAndModel;
  const auto existing = queue->isOurs() ? readExistingQueue(scheduler, *queue) : std::nullopt;
  if (!existing.has_value()) return entry;
  entry["paper"] = existing->printer.modelNumber;
  const auto installed =
      filter::readPrinterDescription(installation.ppd(existing->printer.modelNumber));
  Json options = Json::object();
  for (const auto& [option, value] : ownOptions(*existing, installed.value_or(existing->printer))) {
    options[option] = value;
  }
  entry["options"] = options;
  return entry;
}

std::vector<std::string> queuesToCheck(Scheduler& scheduler, const std::string& wanted) {
  if (!wanted.empty()) return {wanted};
  std::vector<std::string> names;
  for (const Queue& queue : scheduler.queues()) {
    if (queue.isOurs()) names.push_back(queue.name);
  }
  return names;
}

void checkQueues(Scheduler& scheduler, const Installation& installation,
                 const std::vector<std::string>& names, Diagnosis& diagnosis) {
  diagnosis.good("the scheduler runs");
  for (const std::string& name : names) checkQueue(scheduler, installation, name, diagnosis);
  diagnosis.beginQueue("");
  if (names.empty()) {
    diagnosis.note(
        "no queue prints with Wren; add one with: sudo wren add-queue NAME ADDRESS [58|80|112]");
  }
}

}  // namespace

int runDoctor(const DoctorArguments& arguments) {
  const Installation installation(arguments.root);
  Diagnosis diagnosis(arguments.json);
  checkPrograms(diagnosis);
  checkFonts(diagnosis);
  checkFilters(installation, diagnosis);
  checkPpds(installation, diagnosis);
  checkImageFolder(installation, diagnosis);
  Scheduler scheduler;
  Json queues = Json::array();
  if (scheduler.runs()) {
    const auto names = queuesToCheck(scheduler, arguments.queue);
    checkQueues(scheduler, installation, names, diagnosis);
    for (const std::string& name : names) {
      Json entry = describeQueue(scheduler, installation, name);
      entry["checks"] = checksOf(diagnosis, name);
      queues.push_back(entry);
    }
  } else {
    diagnosis.bad("the scheduler does not run", "sudo " + startSchedulerHint());
  }
  if (arguments.json) {
    printJson(
        {{"faults", diagnosis.faults()}, {"checks", checksOf(diagnosis, "")}, {"queues", queues}});
  }
  return diagnosis.faults() == 0 ? kDone : kFailed;
}

}  // namespace wren::cli
