// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_plan.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

#include "cli/rendering.h"

namespace wren::cli {
namespace {

using filter::isSameName;
using filter::PrinterDescription;
using filter::PrinterOption;

// The options of a PPD that follow from the size of the page.
constexpr std::array<std::string_view, 3> kFollowTheSize = {"PageRegion", "ImageableArea",
                                                            "PaperDimension"};

// What CUPS gives every queue, whether or not somebody asked for it.
constexpr std::array<std::string_view, 12> kOfEveryQueue = {
    "job-sheets",     "copies",           "document-format", "job-cancel-after",
    "job-hold-until", "job-priority",     "number-up",       "notify-lease-duration",
    "notify-events",  "print-color-mode", "print-quality",   "sides"};
// CUPS makes media and media-col from the page size of the PPD.
constexpr std::array<std::string_view, 5> kOfEveryQueueToo = {"output-bin", "printer-resolution",
                                                              "finishings", "media", "media-col"};

bool isOfEveryQueue(std::string_view name) {
  return std::find(kOfEveryQueue.begin(), kOfEveryQueue.end(), name) != kOfEveryQueue.end() ||
         std::find(kOfEveryQueueToo.begin(), kOfEveryQueueToo.end(), name) !=
             kOfEveryQueueToo.end();
}

bool isReceiptDefault(std::string_view name, std::string_view value) {
  return std::any_of(
      std::begin(kReceiptDefaults), std::end(kReceiptDefaults),
      [&](const auto& setting) { return name == setting.name && value == setting.value; });
}

bool followsTheSize(std::string_view keyword) {
  return std::any_of(kFollowTheSize.begin(), kFollowTheSize.end(),
                     [&](std::string_view other) { return isSameName(keyword, other); });
}

// The choices of an old PPD that differ from those of a new one and exist there too.
JobOptions keptChoices(const PrinterDescription& from, const PrinterDescription& to) {
  JobOptions kept;
  for (const PrinterOption& option : from.options) {
    const PrinterOption* same = to.find(option.keyword);
    if (same == nullptr || followsTheSize(option.keyword)) continue;
    const bool isCustom = isSameName(option.defaultChoice.substr(0, 6), "Custom");
    if (isSameName(option.defaultChoice, same->defaultChoice)) continue;
    if (isCustom || same->find(option.defaultChoice) != nullptr) {
      kept.emplace_back(option.keyword, option.defaultChoice);
    }
  }
  return kept;
}

void setOption(JobOptions& options, const std::string& name, const std::string& value) {
  std::erase_if(options, [&](const auto& option) { return isSameName(option.first, name); });
  options.emplace_back(name, value);
}

// The name as the PPD spells it, and the choice likewise.
std::pair<std::string, std::string> asInPpd(const PrinterDescription& printer,
                                            const std::pair<std::string, std::string>& option) {
  const PrinterOption* own = printer.find(option.first);
  const auto* choice = own->find(option.second);
  return {own->keyword, choice != nullptr ? choice->name : option.second};
}

std::string change(const std::string& what, const std::string& from, const std::string& to) {
  return what + " " + (from.empty() ? "(none)" : from) + " -> " + (to.empty() ? "(none)" : to);
}

void compareChoices(const PrinterDescription& from, const PrinterDescription& to,
                    const JobOptions& chosen, QueuePlan& plan) {
  for (const PrinterOption& option : to.options) {
    if (followsTheSize(option.keyword)) continue;
    std::string wanted = option.defaultChoice;
    for (const auto& [name, value] : chosen) {
      if (isSameName(name, option.keyword)) wanted = value;
    }
    const PrinterOption* old = from.find(option.keyword);
    if (old != nullptr && !isSameName(old->defaultChoice, wanted)) {
      plan.changes.push_back(change(option.keyword, old->defaultChoice, wanted));
    }
  }
}

void compareDefaults(const Queue& queue, bool isComplete, QueuePlan& plan) {
  for (const auto& [name, value] : plan.defaults) {
    const auto found = queue.defaults.find(name);
    const std::string old = found == queue.defaults.end() ? "" : found->second;
    if (old != value) plan.changes.push_back(change(name, old, value));
  }
  for (const auto& [name, value] : queue.defaults) {
    if (!isComplete || plan.defaults.contains(name) || isOfEveryQueue(name)) continue;
    plan.removedDefaults.push_back(name);
    plan.changes.push_back(change(name, value, ""));
  }
}

std::string withoutDefaults(const std::string& ppdText) {
  std::istringstream lines(ppdText);
  std::string rest;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("*Default")) rest += line + "\n";
  }
  return rest;
}

void compare(const QueueSpec& spec, const ExistingQueue& existing, const PaperPpd& ppd,
             const JobOptions& chosen, QueuePlan& plan) {
  const Queue& queue = existing.queue;
  plan.changesPaper = existing.printer.modelNumber != plan.paper;
  if (queue.uri != spec.uri) plan.changes.push_back(change("address", queue.uri, spec.uri));
  if (plan.changesPaper) {
    plan.changes.push_back(change("paper", std::to_string(existing.printer.modelNumber),
                                  std::to_string(plan.paper) + " mm"));
  } else if (withoutDefaults(existing.ppdText) != withoutDefaults(ppd.text)) {
    plan.changes.push_back("the PPD of this version");
  }
  if (!plan.changesPaper) compareChoices(existing.printer, ppd.printer, chosen, plan);
  compareDefaults(queue, spec.isComplete, plan);
  if (queue.isStopped) plan.changes.push_back("it is started");
  if (!queue.takesJobs) plan.changes.push_back("it takes jobs");
}

}  // namespace

int paperFor(const QueueSpec& spec, const std::optional<ExistingQueue>& existing) {
  if (spec.paper.has_value()) return *spec.paper;
  return existing.has_value() ? existing->printer.modelNumber : 80;
}

QueuePlan planQueue(const QueueSpec& spec, const std::optional<ExistingQueue>& existing,
                    const PaperPpd& ppd) {
  checkJobOptions(ppd.printer, spec.options);
  QueuePlan plan;
  plan.paper = ppd.paper;
  plan.isNew = !existing.has_value();
  JobOptions chosen;
  const bool keepsChoices = existing.has_value() && !spec.isComplete;
  if (keepsChoices) chosen = keptChoices(existing->printer, ppd.printer);
  if (keepsChoices && existing->printer.modelNumber != ppd.paper) {
    std::erase_if(chosen, [](const auto& option) { return option.first == "PageSize"; });
  }
  for (const auto& setting : kReceiptDefaults) plan.defaults[setting.name] = setting.value;
  for (const auto& option : spec.options) {
    if (ppd.printer.find(option.first) != nullptr) {
      const auto [name, value] = asInPpd(ppd.printer, option);
      setOption(chosen, name, value);
    } else {
      plan.defaults[option.first] = option.second;
    }
  }
  plan.ppdText = withDefaults(ppd.text, chosen);
  if (existing.has_value()) compare(spec, *existing, ppd, chosen, plan);
  return plan;
}

std::string withDefaults(const std::string& ppdText, const JobOptions& choices) {
  std::istringstream lines(ppdText);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    constexpr std::string_view kDefault = "*Default";
    const auto colon = line.find(':');
    if (line.starts_with(kDefault) && colon != line.npos) {
      const std::string keyword = line.substr(kDefault.size(), colon - kDefault.size());
      for (const auto& [name, value] : choices) {
        const bool isSize = name == "PageSize" && followsTheSize(keyword);
        if (keyword == name || isSize) line.replace(colon, line.npos, ": " + value);
      }
    }
    text += line + "\n";
  }
  return text;
}

JobOptions ownOptions(const ExistingQueue& existing, const PrinterDescription& installed) {
  JobOptions options = keptChoices(existing.printer, installed);
  for (const auto& [name, value] : existing.queue.defaults) {
    if (!isOfEveryQueue(name) && !isReceiptDefault(name, value)) options.emplace_back(name, value);
  }
  return options;
}

}  // namespace wren::cli
