// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/add_queue_command.h"

#include <unistd.h>

#include <filesystem>

#include "cli/console.h"
#include "cli/document.h"
#include "cli/failure.h"
#include "cli/output_file.h"
#include "cli/queue_access.h"
#include "cli/queue_spec.h"

namespace wren::cli {
namespace {

std::string inQuotes(const std::string& name) {
  return "the queue '" + name + "'";
}

std::vector<QueueSpec> wantedQueues(const AddQueueArguments& arguments) {
  constexpr std::uintmax_t kMostBytes = 16 << 20;  // tens of thousands of queues
  if (!arguments.file.empty()) {
    std::error_code ignored;
    if (access(arguments.file.c_str(), R_OK) != 0 ||
        std::filesystem::is_directory(arguments.file, ignored)) {
      throw Failure(kDocument, "the file '" + arguments.file + "' cannot be read");
    }
    return parseQueues(readWholeFile(arguments.file, kMostBytes), arguments.file);
  }
  QueueSpec spec;
  spec.name = arguments.name;
  spec.uri = arguments.uri;
  if (arguments.paper != 0) spec.paper = arguments.paper;
  spec.options = parseJobOptions(arguments.options);
  checkQueueSpec(spec);
  return {spec};
}

// The same command for somebody who may do it.
std::string commandFor(const AddQueueArguments& arguments) {
  std::string command = "wren add-queue";
  if (!arguments.file.empty()) return command + " --from " + shellWord(arguments.file);
  command += " " + shellWord(arguments.name) + " " + shellWord(arguments.uri);
  if (arguments.paper != 0) command += " " + std::to_string(arguments.paper);
  for (const std::string& option : arguments.options) command += " -o " + shellWord(option);
  return command + (arguments.replace ? " --replace" : "");
}

void checkInstalled(const Installation& installation) {
  for (const std::string& filter : {installation.filter(), installation.commandFilter()}) {
    if (access(filter.c_str(), X_OK) == 0) continue;
    throw Failure(kSetup, "the filter is not installed as " + filter +
                              "; install the package printer-driver-wren");
  }
}

std::optional<ExistingQueue> existingQueue(Scheduler& scheduler, const std::string& name) {
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) return std::nullopt;
  if (!queue->isOurs()) {
    throw Failure(kFailed, "there is a queue '" + name +
                               "' already, not one of Wren's; take another name, or "
                               "remove it with: lpadmin -x " +
                               name);
  }
  auto existing = readExistingQueue(scheduler, *queue);
  // Without its PPD nothing is known of it but what CUPS says.
  if (!existing.has_value()) existing = ExistingQueue{*queue, "", {}};
  return existing;
}

std::string describePlan(const QueueSpec& spec, const QueuePlan& plan, bool dryRun) {
  if (plan.isNew) {
    return inQuotes(spec.name) + (dryRun ? " would be added: " : " is added: ") +
           std::to_string(plan.paper) + " mm, " + spec.uri;
  }
  if (plan.changes.empty()) return inQuotes(spec.name) + " is as asked for; nothing is changed";
  std::string text = inQuotes(spec.name) + (dryRun ? " would be changed: " : " is changed: ");
  for (std::size_t i = 0; i < plan.changes.size(); ++i)
    text += (i > 0 ? "; " : "") + plan.changes[i];
  return text;
}

void checkReplacement(const QueueSpec& spec, const QueuePlan& plan, bool replace) {
  if (!plan.changesPaper || plan.isNew || replace) return;
  throw Failure(kFailed, inQuotes(spec.name) + " is there with another paper; to change it to " +
                             std::to_string(plan.paper) + " mm, add --replace");
}

void apply(Scheduler& scheduler, const QueueSpec& spec, const QueuePlan& plan,
           const AddQueueArguments& arguments) {
  const TemporaryFolder work;
  const std::string ppd = work.pathOf("queue.ppd");
  writeWholeFile(ppd, plan.ppdText);
  const Answer answer =
      scheduler.put({spec.name, spec.uri, ppd, plan.defaults, plan.removedDefaults});
  checkAnswer(answer, "the scheduler did not take " + inQuotes(spec.name), commandFor(arguments));
}

struct PlannedQueue {
  QueueSpec spec;
  QueuePlan plan;
};

// A file has several queues, so its faults name theirs.
PlannedQueue planOne(Scheduler& scheduler, const Installation& installation, const QueueSpec& spec,
                     const std::string& file) {
  try {
    const auto existing = existingQueue(scheduler, spec.name);
    const PaperPpd ppd = readPaperPpd(installation, paperFor(spec, existing));
    return {spec, planQueue(spec, existing, ppd)};
  } catch (const Failure& failure) {
    if (file.empty()) throw;
    throw Failure(failure.status(),
                  file + ", " + inQuotes(spec.name) + ": " + std::string(failure.what()));
  }
}

}  // namespace

int runAddQueue(const AddQueueArguments& arguments) {
  const std::vector<QueueSpec> specs = wantedQueues(arguments);
  const Installation installation(arguments.root);
  checkInstalled(installation);
  Scheduler scheduler;
  needScheduler(scheduler);
  // All are checked before the first is changed.
  std::vector<PlannedQueue> planned;
  for (const QueueSpec& spec : specs) {
    planned.push_back(planOne(scheduler, installation, spec, arguments.file));
    if (!arguments.dryRun) checkReplacement(spec, planned.back().plan, arguments.replace);
  }
  for (const auto& [spec, plan] : planned) {
    const bool isNeeded = plan.isNew || !plan.changes.empty();
    if (isNeeded && !arguments.dryRun) apply(scheduler, spec, plan, arguments);
    say(describePlan(spec, plan, arguments.dryRun));
  }
  return kDone;
}

int runRemoveQueue(const RemoveQueueArguments& arguments) {
  Scheduler scheduler;
  needScheduler(scheduler);
  const std::string& name = arguments.name;
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) throw Failure(kFailed, "there is no queue '" + name + "'");
  if (!queue->isOurs()) {
    throw Failure(kFailed,
                  inQuotes(name) + " is not one of Wren's; remove it with: lpadmin -x " + name);
  }
  if (!arguments.dryRun) {
    checkAnswer(scheduler.remove(queue->name), inQuotes(name) + " cannot be removed",
                "wren remove-queue " + shellWord(name));
  }
  say(inQuotes(name) + (arguments.dryRun ? " would be removed" : " is removed"));
  return kDone;
}

}  // namespace wren::cli
