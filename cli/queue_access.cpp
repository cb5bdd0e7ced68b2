// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_access.h"

#include "cli/failure.h"
#include "cli/output_file.h"

namespace wren::cli {

PaperPpd readPaperPpd(const Installation& installation, int paper) {
  const std::string path = installation.ppd(paper);
  const auto printer = filter::readPrinterDescription(path);
  if (!printer.has_value()) {
    throw Failure(kSetup, "the PPD " + path + " is missing or damaged; wren doctor says more");
  }
  return {paper, readWholeFile(path), *printer};
}

std::optional<ExistingQueue> readExistingQueue(Scheduler& scheduler, const Queue& queue) {
  const TemporaryFolder work;
  const std::string path = work.pathOf("ppd");
  if (!scheduler.fetchPpd(queue.name, path)) return std::nullopt;
  const auto printer = filter::readPrinterDescription(path);
  if (!printer.has_value()) return std::nullopt;
  return ExistingQueue{queue, readWholeFile(path), *printer};
}

void needScheduler(const Scheduler& scheduler) {
  if (scheduler.runs()) return;
  throw Failure(kFailed, "the scheduler does not run; start it with: sudo " + startSchedulerHint());
}

void checkAnswer(const Answer& answer, const std::string& what, const std::string& command) {
  if (answer.done) return;
  if (answer.isRefused) {
    throw Failure(
        kFailed,
        what + ": only root or a member of the group lpadmin may do that: sudo " + command);
  }
  throw Failure(kFailed, what + ": " + answer.reason);
}

}  // namespace wren::cli
