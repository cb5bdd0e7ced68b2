// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The way from a queue as it is to a queue as it is asked for: what would change, in words, and
// the PPD and settings that do it.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/queue_spec.h"
#include "cli/scheduler.h"
#include "filter/printer_description.h"

namespace wren::cli {

/// The state of a queue that exists.
struct ExistingQueue {
  Queue queue;
  std::string ppdText;
  filter::PrinterDescription printer;
};

struct QueuePlan {
  int paper = 80;
  bool isNew = false;
  bool changesPaper = false;
  std::vector<std::string> changes;  ///< empty if the queue is as asked
  std::string ppdText;
  std::map<std::string, std::string> defaults;
  std::vector<std::string> removedDefaults;
};

/// The PPD for a width of paper.
struct PaperPpd {
  int paper = 80;
  std::string text;
  filter::PrinterDescription printer;
};

/// The paper that a queue will have.
int paperFor(const QueueSpec& spec, const std::optional<ExistingQueue>& existing);

/// @param ppd of `paperFor`. Throws a Failure if the printer or CUPS does not know an option.
QueuePlan planQueue(const QueueSpec& spec, const std::optional<ExistingQueue>& existing,
                    const PaperPpd& ppd);

/// The text of a PPD with other default choices.
std::string withDefaults(const std::string& ppdText, const JobOptions& choices);

/// The options of a queue by which it differs from its PPD as installed and from the settings of
/// `add-queue`: what a file has to say to get it again.
JobOptions ownOptions(const ExistingQueue& existing, const filter::PrinterDescription& installed);

}  // namespace wren::cli
