// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What the commands for queues share: the PPDs of this version and the present state of a queue.

#pragma once

#include <optional>
#include <string>

#include "cli/installation.h"
#include "cli/queue_plan.h"
#include "cli/scheduler.h"

namespace wren::cli {

/// Reads a PPD; throws a Failure if it is missing or damaged.
PaperPpd readPaperPpd(const Installation& installation, int paper);

/// The state of a queue with a PPD that can be read; nothing otherwise.
std::optional<ExistingQueue> readExistingQueue(Scheduler& scheduler, const Queue& queue);

/// Throws a Failure with the command that starts the scheduler if it does not run.
void needScheduler(const Scheduler& scheduler);

/// Throws a Failure if a request was not done; one that this user may not make names the command
/// for somebody who may.
void checkAnswer(const Answer& answer, const std::string& what, const std::string& command);

}  // namespace wren::cli
